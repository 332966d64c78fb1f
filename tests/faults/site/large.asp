<%@ EnableSessionState="False" %><%
// Streams 20 MB.
var piece = "0123456789".repeat(10000);
for (var i = 0; i < 200; i++) { Response.Write(piece); Response.Flush(); }
%>
