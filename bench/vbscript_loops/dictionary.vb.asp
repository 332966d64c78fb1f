<%@ Language="VBScript" %><%
Dim d, i, key, n
Set d = Server.CreateObject("Scripting.Dictionary")
For i = 1 To 5000
  key = "k" & i Mod 100
  If d.Exists(key) Then
    d(key) = d(key) + 1
  Else
    d.Add key, 1
  End If
Next
For i = 0 To 99 : n = n + d("k" & i) : Next
Response.Write n
%>
