<%
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.TemplateFolder = Server.MapPath("tpl");
mirt.TemplateExt = ".html";
mirt.Template = "none";
function On_TemplateNotFound(m) { m.Template = "other"; return false; }
mirt.Process();
%>
