<%@ Language="VBScript" %>
<%
' An upload taken apart by byte strings, as pages did without a component.
Function Bytes(text)
  Dim i
  For i = 1 To Len(text)
    Bytes = Bytes & ChrB(AscB(Mid(text, i, 1)))
  Next
End Function
Function Text(bytes)
  Dim i
  For i = 1 To LenB(bytes)
    Text = Text & Chr(AscB(MidB(bytes, i, 1)))
  Next
End Function

Dim data, boundary, at, finish, head, part, nameAt, name, fileName, crlf, count
data = Request.BinaryRead(Request.TotalBytes)
Response.Write TypeName(data) & " " & LenB(data) & " " & VarType(data) & vbLf
crlf = ChrB(13) & ChrB(10)
boundary = MidB(data, 1, InStrB(1, data, crlf) - 1)
Response.Write Text(boundary) & vbLf
at = 1
Do
  at = InStrB(at, data, boundary)
  If at = 0 Then Exit Do
  at = at + LenB(boundary)
  If MidB(data, at, 2) = Bytes("--") Then Exit Do
  finish = InStrB(at, data, crlf & crlf)
  head = Text(MidB(data, at + 2, finish - at - 2))
  at = finish + 4
  part = MidB(data, at, InStrB(at, data, boundary) - at - 2)
  nameAt = InStr(head, "name=""") + 6
  name = Mid(head, nameAt, InStr(nameAt, head, """") - nameAt)
  nameAt = InStr(1, head, "FILENAME=""", vbTextCompare)
  fileName = ""
  If nameAt > 0 Then fileName = Mid(head, nameAt + 10, InStr(nameAt + 10, head, """") - nameAt - 10)
  Response.Write name & " [" & fileName & "] " & LenB(part) & " bytes"
  If fileName = "" Then
    Response.Write ": " & Text(part)
  Else
    Response.Write ": " & AscB(MidB(part, 1, 1)) & "," & AscB(MidB(part, LenB(part))) & " " & Hex(AscB(RightB(part, 2)))
  End If
  Response.Write vbLf
  count = count + 1
Loop
Response.Write count & " parts"
%>
