<%@ EnableSessionState="False" %><%
for (;;);
%>
