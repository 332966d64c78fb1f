line one
<%
var x = 1;
Server.CreateObject("No.Such.Class");
%>
