<%@ Language="VBScript" %>
<% Option Explicit
' What a procedure changes of what it was given, and what not.
Dim a, b, list(2), s, global1
Sub Twice(x)
  x = x * 2
End Sub
Sub TwiceOfCopy(ByVal x)
  x = x * 2
End Sub
Sub Swap(ByRef x, ByRef y)
  Dim t
  t = x
  x = y
  y = t
End Sub
Sub Deeper(x)
  Twice x
End Sub
Function Next1(n)
  n = n + 1
  Next1 = n
End Function
Sub SeesBoth(x)
  x = 7
  s = s & "[" & x & global1 & "]"
  global1 = 8
  s = s & "[" & x & global1 & "]"
End Sub
Sub ChangesArray(values)
  values(0) = "changed"
  ReDim Preserve values(1)
End Sub
Class Holder
  Public Value
  Public Sub Add(n)
    n = n + 1
  End Sub
End Class

a = 2 : Twice a : Response.Write a & " "
TwiceOfCopy a : Response.Write a & " "
Twice(a) : Response.Write a & " "
Call Twice(a) : Response.Write a & " "
Twice (a) + 0 : Response.Write a & " "
Deeper a : Response.Write a & vbLf

b = 1 : Swap a, b : Response.Write a & "," & b & " "
list(0) = "x" : list(1) = "y"
Swap list(0), list(1) : Response.Write list(0) & list(1) & " "
Twice list(2) : Response.Write list(2) & " " & TypeName(list(2)) & vbLf

Response.Write Next1(b) & b & Next1((b)) & b & Next1(b) + b & vbLf
global1 = 1 : SeesBoth global1 : Response.Write s & global1 & vbLf

Dim values, copy
values = Array(1, 2, 3)
copy = values
ChangesArray values
Response.Write values(0) & UBound(values) & " " & copy(0) & UBound(copy) & vbLf

Dim o : Set o = New Holder
o.Value = 5
o.Add o.Value : Response.Write o.Value & " "
a = 5 : o.Add a : Response.Write a & " "
o.Add (a) : Response.Write a & vbLf

Dim f : Set f = GetRef("Next1")
a = 1
Response.Write f((a)) & " " & a
%>
