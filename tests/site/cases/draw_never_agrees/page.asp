<%
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.Template = "t";
function OnDrawTemplate_t() { return false; }
mirt.Process();
%>
