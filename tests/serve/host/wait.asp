<%@ EnableSessionState="False" %>
<%
// Says that it has begun, then runs for ?ms= milliseconds.
Response.Write("begun ");
Response.Flush();
var end = Date.now() + Number(Request.QueryString("ms")(1));
while (Date.now() < end);
%>done
