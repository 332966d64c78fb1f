<%@ Language="VBScript" %><%
Dim s, i, n, text
s = "the quick brown fox jumps over the lazy dog "
For i = 1 To 5000 : text = text & s : Next
For i = 1 To Len(text)
  If Mid(text, i, 1) = "o" Then n = n + 1
Next
Response.Write n
%>
