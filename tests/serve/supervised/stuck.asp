<%@ EnableSessionState="False" %>
<%
// Sleeps in a component, where no limit of the host reaches it.
Response.Write("begun ");
Response.Flush();
Server.CreateObject("Mirt.Utility").Sleep(0x7FFFFFFF);
%>
