<%@ EnableSessionState="False" %><%
Response.Redirect("plain.txt");
%>
