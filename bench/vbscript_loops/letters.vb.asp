<%@ Language="VBScript" %><%
Dim text, i, c, turned, sum
For i = 1 To 2000 : text = text & "Hello, World " : Next
For i = 1 To Len(text)
  c = Asc(Mid(text, i, 1))
  If c >= 97 And c <= 122 Then c = 97 + (c - 97 + 13) Mod 26
  If c >= 65 And c <= 90 Then c = 65 + (c - 65 + 13) Mod 26
  turned = turned & Chr(c)
  sum = (sum * 3 + c) Mod 9973
Next
Response.Write Left(turned, 13) & Len(turned) & " " & sum
%>
