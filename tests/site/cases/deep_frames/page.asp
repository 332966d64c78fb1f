<%
// Deep in the script, then through the component, again and again.
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
var first, rounds = 0;
function told(e) { return (e.number >>> 0).toString(16) + " " + e.message + "\n"; }
function deeper(n) {
  if (n > 0) return deeper(n - 1);
  try { return mirt.FireEvent("On_Deep", 1, ""); } catch (e) { first = first || e; throw e; }
}
function On_Deep(m) { ++rounds; return deeper(500); }
try { deeper(500); } catch (e) { Response.Write(told(first) + told(e)); }
Response.Write(String(rounds > 2));
%>