<%@ Language="VBScript" %><%
Dim i, x, y
y = 1
For i = 1 To 300000
  x = (x + i * 3) Mod 65536
  y = y + x - 32768
Next
Response.Write x & " " & y
%>
