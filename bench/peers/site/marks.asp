<%@ Language="JavaScript" CodePage="65001" %><%
var count = 100;
var page = Server.CreateObject("Mirt");
page.AddScript(this);
page.TemplateFolder = Server.MapPath("templates");
page.TemplateExt = ".html";
page.DefaultTemplate = "table";
page.Process();

function OnDraw_Rows(page, texts) {
  for (var i = 1; i <= count; i++) {
    page.SetView("Id", i);
    page.SetView("Name", "Entry <" + i + "> of the list");
    page.SetView("Words",
      "What was said & done about entry " + i + ", in about as many words as a line of a list or a table has");
    page.SetView("Amount", i * 37);
    page.ProcessTemplate(texts[0]);
  }
}
%>
