<%
var page = Server.CreateObject("Mirt");
page.Script = this;
function On_StartProcess() { page.NoSuch = 1; }
page.Process();
%>
