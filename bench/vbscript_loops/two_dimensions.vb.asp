<%@ Language="VBScript" %><%
Dim m(99, 99), i, j, n, round
For round = 1 To 20
  For i = 0 To 99
    For j = 0 To 99 : m(i, j) = i + j + round : Next
  Next
  For i = 0 To 99
    For j = 0 To 99 : n = n + m(j, i) : Next
  Next
Next
Response.Write n
%>
