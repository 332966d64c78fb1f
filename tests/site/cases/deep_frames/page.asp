<%
// Deep in the script, then through the component, again and again.
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
function deeper(n) { return n > 0 ? deeper(n - 1) : mirt.FireEvent("On_Deep", 1, ""); }
function On_Deep(m) { return deeper(500); }
deeper(500);
%>
