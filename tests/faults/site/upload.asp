<%@ EnableSessionState="False" %><%
// Says how large the file is that came.
var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);
function On_StartProcess() { Response.Write(mirt.ToArray(mirt.Request("file"))[0].Stream.Size); }
function On_StartDraw() { return false; }
mirt.Process();
%>
