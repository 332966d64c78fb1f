<%@ Language="VBScript" %><%
Dim marks(999), i, round, sum, average
For i = 0 To 999 : marks(i) = (i Mod 40) / 4 : Next
For round = 1 To 200
  sum = 0
  For i = 0 To 999 : sum = sum + marks(i) : Next
  average = sum / 1000
Next
Response.Write sum & " " & average
%>
