<%@ EnableSessionState="False" %><%
// A cookie for an hour.
Response.Cookies("kept") = "yes";
Response.Cookies("kept").Expires = new Date(Date.now() + 3600000);
Response.Write(new Date().toISOString());
%>
