<%@ Language="VBScript" %><%
Dim a(999), i, n, round, one
For i = 0 To 999 : a(i) = i : Next
For round = 1 To 300
  For Each one In a : n = n + one : Next
Next
Response.Write n
%>
