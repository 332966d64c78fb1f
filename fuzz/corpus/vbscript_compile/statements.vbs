Option Explicit
Dim x, a(3), i, s
Const C = 5
x = 1 + 2 * C
For i = 0 To 3
  a(i) = i * 2 + x
Next
s = "sum: " & Sum(a) & vbCrLf
Sub Inc(n)
  n = n + 1
End Sub
Inc x
Inc a(1)
If x > 3 And Not IsEmpty(s) Then Response.Write s Else Response.Write "no"
Function Sum(v)
  Dim e
  For Each e In v
    Sum = Sum + e
  Next
End Function
Class Point
  Public X, Y
  Private n_
  Public Default Property Get Name(): Name = n_ : End Property
  Property Let Name(v)
    n_ = UCase(v)
  End Property
  Function Dist(o)
    Dist = Sqr((X - o.X) ^ 2 + (Y - o.Y) ^ 2)
  End Function
End Class
Dim p: Set p = New Point
p.X = 1: p.Y = 2: p.Name = "abc"
With p
  .X = 5
  Response.Write .Name & .Dist(p)
End With
Select Case x
Case 1, 2
  x = 1
Case 16
  x = "sixteen"
Case Else
  x = Null
End Select
Do While i > 0 : i = i - 1 : Loop
Sub T
  On Error Resume Next
  Dim k
  For k = 1 To 3
    x = 1 / 0
    If Err.Number <> 0 Then Response.Write Err.Description : Err.Clear
  Next
  On Error GoTo 0
End Sub
T
