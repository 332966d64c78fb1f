<%
// A form that was read is served to the page that processes again, and to every further controller.
function fields(m) { return m.Request("a") + "," + m.Request("f")(1).FileName + "," + m.Request.Count; }
var reported = "";
function On_EndProcess(m) { reported += fields(m) + "\n"; }
var first = Server.CreateObject("Mirt");
first.Script = this;
first.Process();
first.Process();
var second = Server.CreateObject("Mirt");
second.AddScript(this);
second.Process();
second.PutIntoProp("a", false);
var a;
Response.Write(reported + String(a) + "\n");
// What a script reads of the body by itself stays as it was: at the end there are no bytes.
Response.Write(Request.BinaryRead(10).length + "\n");
%>
