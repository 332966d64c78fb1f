<%
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.TemplateFolder = Server.MapPath("tpl");
mirt.TemplateExt = ".html";
mirt.DefaultTemplate = "main";
mirt.Name = "app";
var title = "K\u00F6ln & <co>";
function OnCommand_Save(m) { m.Bag("saved") = Request("v") + ""; }
function OnDraw_tail(m) { m.Write("end", false); }
mirt.Process();
%>
