<%@ Language="VBScript" %>
<%
' Errors that a page goes on after, and what Err tells of them.
Sub Tell(what)
  Response.Write what & ": "
  If Err.Number <> 0 Then
    Response.Write Err.Number & " " & Err.Description & " (" & Err.Source & ")"
    Err.Clear
  Else
    Response.Write "nothing"
  End If
  Response.Write vbLf
End Sub
Function Divide(a, b)
  Divide = a / b
End Function
Sub Careful
  On Error Resume Next
  Dim x
  x = 5
  x = Divide(1, 0)
  Tell "in Careful, x = " & x
  On Error GoTo 0
End Sub
Sub Careless
  Dim a(3)
  a(4) = 1
  Response.Write "never" & vbLf
End Sub
Dim x, s, o, n
On Error Resume Next
x = 1 / 0
Tell "division"
x = "abc" + 1
Tell "mismatch"
Careless
Tell "subscript"
Careful
Set o = Nothing
o.Name = 1
Tell "nothing"
x = 5
x.Name = 1
Tell "no object"
Set x = 5
Tell "set"
Set o = CreateObject("Scripting.Dictionary")
o.Blah
Tell "member"
o.Add "a", 1
o.Add "a", 2
Tell "twice"
s = CInt("40000")
Tell "overflow"
s = Mid("abc", 0)
Tell "argument"
x = Null
If x = 1 Then Response.Write "never" & vbLf
s = CStr(x)
Tell "null"
Err.Raise 1001, "Shop", "Out of tea"
Tell "raised"
Err.Raise 9
Tell "raised 9"
Set o = CreateObject("No.Such")
Tell "class"
If 1 / 0 > 0 Then
  Response.Write "a failing condition goes into the block" & vbLf
End If
Err.Clear
Undefined1 1
Tell "no procedure"
Response.Write "end"
%>
