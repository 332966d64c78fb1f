<%
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
function again(m) { m.ProcessTemplate("(#%again#)"); }
mirt.ProcessTemplate("(#%again#)");
%>
