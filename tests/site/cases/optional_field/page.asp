<%
// A field that was not submitted draws nothing, in the controller and in a child, and is nothing to a script.
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.ProcessTemplate("[(#$none#)(#\\none#)]");
var child = mirt.NewTemplator("");
child.ProcessTemplate("[(#$none#)(#\\none#)(#$q#)]");
Response.Write(child.Flush() + "|" + (Request("none") === undefined) + "\n");
%>
