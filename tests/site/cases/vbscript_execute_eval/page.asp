<%@ Language="VBScript" %>
<%
' Code made of text, in the scope where it stands.
Dim x, f
x = 10
Response.Write Eval("x * 2 + 1") & " " & Eval("x = 10") & vbLf
Execute "x = x + 1 : y = x * 2"
Response.Write x & " " & y & vbLf
Sub Inner
  Dim x
  x = 1
  Execute "x = x + 1"
  Response.Write x & " " & Eval("x & ""!""") & vbLf
  ExecuteGlobal "x = 99"
  Response.Write x & vbLf
End Sub
Inner
Response.Write x & vbLf
Function Apply(fn, n) : Apply = fn(n) : End Function
Function Square(n) : Square = n * n : End Function
Set f = GetRef("Square")
Response.Write Apply(f, 7) & vbLf
On Error Resume Next
Execute "x = = 1"
Response.Write Err.Number & " " & Err.Description & " (" & Err.Source & ")" & vbLf
Err.Clear
x = Eval("1 +")
Response.Write Err.Number & vbLf
Err.Clear
Execute "Dim a(2) : a(3) = 1"
Response.Write Err.Number
%>
