<%@ EnableSessionState="False" %><%
Response.Write(Request.TotalBytes);
%>
