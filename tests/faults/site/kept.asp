<%@ EnableSessionState="False" %><%
// Answers how many bytes the file has that is uploaded as "f", all of which the page has had in its hands.
var mirt = Server.CreateObject("Mirt"), bytes = 0;
mirt.AddScript(this);
function On_StartProcess() { bytes = mirt.ToArray(mirt.Request("f"))[0].Stream.Read().length; }
function On_StartDraw() { return false; }
mirt.Process();
Response.Write(bytes);
%>
