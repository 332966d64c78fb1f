<%@ Language="JavaScript" CodePage="65001" %>
<%
var page = Server.CreateObject("Mirt");
page.AddScript(this);
page.TemplateFolder = Server.MapPath("templates");
page.TemplateExt = ".html";
page.DefaultTemplate = "t" + Request.QueryString("number");
page.Process();

function On_StartDraw(page) { page.SetView("Word", "hello"); }
%>
