<%
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.TemplateFolder = Server.MapPath("tpl");
mirt.Template = "..\\secret";
try { mirt.Process(); } catch (e) { Response.Write(e.message.replace(/\[.*[\/\\]/, "[") + "|" + e.source); }
%>
