<%@ Language="JavaScript" CodePage="65001" %>
<!--#include file="settings.inc"-->
<!--#include file="database.inc"-->
<!--#include file="pictures.inc"-->
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
try {
  page.Process();
} catch (error) {
  // Anybody can type a command that there is not.
  if (!/^Unknown Command /.test(error.message)) throw error;
  Response.Clear();
  Response.Status = "404 Not Found";
  Response.Write("There is no such page.");
}

// A field of the form, as text; of several values the first.
function field(name) {
  var values = page.Request(name);
  return values && values.Count > 0 ? String(values(1)).trim() : "";
}
function itemId() { return /^\d{1,9}$/.test(field("id")) ? Number(field("id")) : 0; }

function isKnown() { return Session("is_known") === true; }

// --- commands

// Who is not known may only log in.
function On_StartCommand(page) { return isKnown() || page.Command == "Login" || page.Command == ""; }

function OnCommand_Login(page) {
  if (field("password") !== settings.password) return page.AddMessage("That is not the password.", "problem");
  Session.RenewID();  // whoever has seen the identifier before does not have this session now
  Session("is_known") = true;
}

function OnCommand_Logout() { Session("is_known") = false; }

function OnCommand_Add(page) {
  var words = field("words");
  if (words == "") return page.AddMessage(1, "problem");
  if (words.length > 200) return page.AddMessage(2, "problem");
  // A field without a file arrives as an empty text, or not at all.
  var uploads = page.Request("picture"), picture = null;
  if (uploads && uploads.Count > 0 && typeof uploads(1) !== "string") {
    picture = pictures.keep(page, uploads(1));
    if (!picture) return page.AddMessage(3, "problem");
  }
  database.run("INSERT INTO items (words, picture) VALUES (?, ?)", [words, picture]);
}

function OnCommand_Delete() {
  var item = database.rows("SELECT picture FROM items WHERE id = ?", [itemId()])[0];
  if (!item) return;
  database.run("DELETE FROM items WHERE id = ?", [itemId()]);
  pictures.remove(item.picture);
}

function OnCommand_Done() { database.run("UPDATE items SET done = 1 - done WHERE id = ?", [itemId()]); }

// --- drawing

// What the layout, templates/page.html, shows where it says (#@content#).
function On_StartDraw(page) { page.Include("content") = isKnown() ? "list" : "login"; }

function OnDraw_IfKnown(page, texts) { if (isKnown()) page.ProcessTemplate(texts[0]); }
function OnDraw_IfPicture(page, texts) { if (page.View("has_picture")) page.ProcessTemplate(texts[0]); }

// (#%Items|…#|#…#) in the template: a row for each item, or what stands there when there is none.
function OnDraw_Items(page, texts) {
  var items = database.rows("SELECT id, words, done, picture FROM items ORDER BY done, id DESC");
  if (items.length == 0) page.ProcessTemplate(texts[1]);
  items.forEach(function (item) {
    page.SetView("id", item.id);
    page.SetView("words", item.words);
    page.SetView("state", item.done ? "done" : "open");
    page.SetView("has_picture", item.picture !== null);
    page.ProcessTemplate(texts[0]);
  });
}
%>
