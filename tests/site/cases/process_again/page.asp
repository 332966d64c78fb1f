<%
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
function On_StartProcess(m) { m.Process(); }
mirt.Process();
%>
