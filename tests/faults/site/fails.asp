<%@ EnableSessionState="False" %><%
Response.Write("begins");
nowhere.to.be.found();
%>
