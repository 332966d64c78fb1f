<%@ Language="VBScript" %><%
Dim s, i
For i = 1 To 100000 : s = s & "<li>" & i & "</li>" : Next
Response.Write Len(s)
%>
