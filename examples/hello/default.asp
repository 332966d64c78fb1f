<%@ Language="JavaScript" %>
<%
var page = Server.CreateObject("Mirt");
page.AddScript(this);
page.TemplateFolder = Server.MapPath("templates");
page.TemplateExt = ".html";
page.DefaultTemplate = "hello";
page.Process();

function OnCommand_(page) {  // no command
  page.SetView("Who", "stranger");
}

function OnCommand_Greet(page) {
  page.SetView("Who", String(Request.QueryString("who")));
}

function OnDraw_Repeat(page, texts) {
  for (var i = 0; i < Number(texts[0]); i++) page.ProcessTemplate(texts[1]);
}
%>
