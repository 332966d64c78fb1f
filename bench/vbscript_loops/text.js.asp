<%
var s = "", i;
for (i = 1; i <= 100000; i++) s = s + "<li>" + i + "</li>";
Response.Write(s.length);
%>
