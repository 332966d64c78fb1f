<%
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
try { mirt.ProcessTemplate("(#;none#)"); } catch (e) { Response.Write(e.message + "|" + e.source + "|" + (e.number >>> 0).toString(16)); }
%>
