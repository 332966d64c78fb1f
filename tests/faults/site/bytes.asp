<%@ EnableSessionState="False" %><%
// Answers how many bytes of the body the page has had in its hands.
Response.Write(Request.BinaryRead(Request.TotalBytes).length);
%>
