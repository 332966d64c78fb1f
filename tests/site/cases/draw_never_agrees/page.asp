<%
// Nothing limits a draw that is refused for ever but the stack.
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.Template = "t";
var asked = 0;
function told(e) { return (e.number >>> 0).toString(16) + " " + e.message + "\n"; }
function OnDrawTemplate_t() { ++asked; return false; }
try { mirt.Process(); } catch (e) { Response.Write(told(e)); }
Response.Write(String(asked > 10));
%>