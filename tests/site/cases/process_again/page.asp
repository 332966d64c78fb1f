<%
// A page that begins itself again.
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
var first, depth = 0;
function told(e) { return (e.number >>> 0).toString(16) + " " + e.message + "\n"; }
function On_StartProcess(m) {
  ++depth;
  try { m.Process(); } catch (e) { first = first || e; throw e; }
}
try { mirt.Process(); } catch (e) { Response.Write(told(first) + told(e)); }
Response.Write(String(depth > 10));
%>