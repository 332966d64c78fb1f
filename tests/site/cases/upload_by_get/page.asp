<%
// A body binds only where it was posted: by any other method the query string does.
var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);
mirt.SubmitDecodeOnPutInto = true;
mirt.Name = "app";
function On_StartProcess() {
  mirt.PutIntoView("", false);
  Response.Write(mirt.Request("a") + "|" + mirt.View("a") + "|" + mirt.View("b"));
}
function On_StartDraw() { return false; }
mirt.Process();
%>
