<%
var t = Server.CreateObject("Mirt.TextTemplator");
t.Script = this;
function name() { return "mark"; }
t.ProcessTemplate("a (#name#) b");
Response.Write(t.Flush());
%>
