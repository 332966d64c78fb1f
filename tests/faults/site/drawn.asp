<%@ EnableSessionState="False" %><%
var page = Server.CreateObject("Mirt");
page.AddScript(this);
page.TemplateFolder = Server.MapPath(".");
page.TemplateExt = ".html";
page.DefaultTemplate = "drawn";
page.Process();
%>
