<%@ Language="VBScript" %>
<% Option Explicit
Function Fib(n)
  If n < 2 Then Fib = n : Exit Function
  Fib = Fib(n - 1) + Fib(n - 2)
End Function
Sub QuickSort(list, ByVal low, ByVal high)
  Dim pivot, i, j, t
  If low >= high Then Exit Sub
  pivot = list((low + high) \ 2) : i = low : j = high
  Do
    While list(i) < pivot : i = i + 1 : Wend
    While list(j) > pivot : j = j - 1 : Wend
    If i <= j Then
      t = list(i) : list(i) = list(j) : list(j) = t
      i = i + 1 : j = j - 1
    End If
  Loop Until i > j
  QuickSort list, low, j
  QuickSort list, i, high
End Sub
Sub Hanoi(n, a, b, c, ByRef moves)
  If n = 0 Then Exit Sub
  Hanoi n - 1, a, c, b, moves
  moves = moves + 1
  Hanoi n - 1, c, b, a, moves
End Sub
Dim numbers, moves, n, d, key, i, j, grid(2, 3), word, counts
Response.Write Fib(15) & vbLf
numbers = Array(5, 3, 9, -1, 3, 12, 0)
QuickSort numbers, 0, UBound(numbers)
Response.Write Join(numbers, " ") & vbLf
moves = 0 : Hanoi 6, "a", "b", "c", moves : Response.Write moves & vbLf
For i = 0 To 2 : For j = 0 To 3 : grid(i, j) = i * j : Next : Next
n = 0 : For Each i In grid : n = n + i : Next : Response.Write n & " " & UBound(grid, 1) & UBound(grid, 2) & vbLf
Set d = Server.CreateObject("Scripting.Dictionary")
For Each word In Split("the cat and the dog and the bird")
  d(word) = d(word) + 1
Next
For Each key In d.Keys
  If key = "bird" Then Exit For
  Response.Write key & "=" & d(key) & " "
Next
Response.Write d.Count & vbLf
For i = 10 To 1 Step -3 : Response.Write i & " " : Next : Response.Write i & vbLf
For n = 0 To 0.5 Step 0.25 : Response.Write n & " " : Next
j = 3
For i = 1 To j : j = 10 : Response.Write i : Next
i = 0
Do : i = i + 1 : If i = 3 Then Exit Do
Loop While True
Do While i < 5 : i = i + 1 : Loop
Do Until i = 7 : i = i + 1 : Loop
Response.Write " " & i & vbLf
Select Case True
  Case i > 10 : Response.Write "more"
  Case i > 5, i = 1 : Response.Write "some"
  Case Else : Response.Write "few"
End Select
Erase numbers
Dim fixed(2) : fixed(1) = 5 : Erase fixed
Response.Write " " & IsEmpty(fixed(1)) & IsArray(numbers)
%>
