<%
// A draw event that draws itself: told where the stack ended, and to the page.
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
var first, depth = 0;
function told(e) { return (e.number >>> 0).toString(16) + " " + e.message + "\n"; }
function OnDraw_again(m) {
  ++depth;
  try { m.ProcessTemplate("(#%again#)"); } catch (e) { first = first || e; throw e; }
}
try { mirt.ProcessTemplate("(#%again#)"); } catch (e) { Response.Write(told(first) + told(e)); }
Response.Write(String(depth > 10));
%>