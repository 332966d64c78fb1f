<%@ Language="JavaScript" CodePage="65001" %>
<!--#include file="database.inc"-->
<%
// A list that visitors add to. The button that was pressed names the command, so that OnCommand_Add or OnCommand_Delete
// runs; then the template templates/page.html is drawn.
var page = Server.CreateObject("Mirt");
page.AddScript(this);
page.Name = "list";
page.Backable = false;  // a form counts once, whatever the back button brings back
page.TemplateFolder = Server.MapPath("templates");
page.TemplateExt = ".html";
page.DefaultTemplate = "page";
page.Process();

// A field of the form, as text; of several values the first.
function field(name) {
  var values = page.Request(name);
  return values && values.Count > 0 ? String(values(1)).trim() : "";
}
function itemId() { return /^\d{1,9}$/.test(field("id")) ? Number(field("id")) : 0; }

// --- commands

function OnCommand_Add(page) {
  var words = field("words");
  if (words == "") return page.AddMessage(1, "problem");
  if (words.length > 200) return page.AddMessage(2, "problem");
  database.run("INSERT INTO items (words) VALUES (?)", [words]);
}

function OnCommand_Delete() {
  database.run("DELETE FROM items WHERE id = ?", [itemId()]);
}

// --- drawing

// (#%Items|…#|#…#) in the template: a row for each item, or what stands there when there is none.
function OnDraw_Items(page, texts) {
  var items = database.rows("SELECT id, words FROM items ORDER BY id DESC");
  if (items.length == 0) page.ProcessTemplate(texts[1]);
  items.forEach(function (item) {
    page.SetView("id", item.id);
    page.SetView("words", item.words);
    page.ProcessTemplate(texts[0]);
  });
}
%>
