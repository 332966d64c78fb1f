<%
var mirt = Server.CreateObject("Mirt");
mirt.TemplateFolder = Server.MapPath("tpl");
mirt.TemplateExt = ".html";
mirt.Template = "loop";
mirt.Process();
%>
