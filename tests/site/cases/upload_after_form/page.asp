<%
// A page that has read Form has taken the body: an upload in it can no longer be read.
var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);
Response.Write(Request.Form.Count + "\n");
try { mirt.Process(); } catch (error) { Response.Write(error.message + "\n"); }
%>
