<%
var first = Request.BinaryRead(3);
var rest = Request.BinaryRead(100);
Response.Write(first.length + "," + rest.length + "," + first[0]);
try { Request.Form("a"); Response.Write(Request.Form("a")); } catch (e) { Response.Write("|" + e.message); }
%>
