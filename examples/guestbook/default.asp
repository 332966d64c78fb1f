<%@ Language="JavaScript" CodePage="65001" %>
<!--#include file="database.inc"-->
<%
// The guest book: a form, the list of entries in pages, and commands that add, change and delete one.
// Everybody sees the entries; who wrote one may change it, which the visitor's session bag remembers.
var perPage = 5;
var commandField, listPage, pageCount;
var fields = ["id", "name", "topic", "mood", "hidden", "words"];

var page = Server.CreateObject("Mirt");
page.AddScript(this);
page.Name = "guestbook";
page.TemplateFolder = Server.MapPath("templates");
page.TemplateExt = ".html";
page.DefaultTemplate = "page";
page.Backable = false;  // a form counts once: what the back button brings back is no longer expected
page.NullIsEmpty = true;
page.SubmitDecodeOnPutInto = true;
page.Process();

// --- commands

function On_FirstAccess(page) { page.Bag("owner") = page.MakeGUID(true); }

function On_StartProcess(page) { fill(page, { id: "", name: "", topic: "hello", mood: "happy", hidden: "", words: "" }); }

// No command that this page knows. A form that was sent nevertheless comes from a page that is out of date.
function OnCommand_(page) {
  if (Request.ServerVariables("REQUEST_METHOD") == "POST") page.AddMessage(4, "notice");
}

// The list's own links; which page of it is shown is a parameter.
function OnCommand_List() {}

function OnCommand_Save(page) {
  fields.forEach(function (name) { page.PutIntoView(name, false); });
  var entry = {};
  fields.forEach(function (name) { entry[name] = page.Trim(page.View(name)) || ""; });
  if (entry.name == "") page.AddMessage(1, "problem");
  if (entry.words == "") page.AddMessage(2, "problem");
  if (entry.words.length > 2000) page.AddMessage(3, "problem");
  if (page.MessageExists("problem")) return;
  var values = [entry.name, entry.topic, entry.mood, entry.hidden == "yes" ? 1 : 0, entry.words];
  if (entry.id == "") {
    database.run(page, "INSERT INTO entries (name, topic, mood, hidden, words, owner, written) " +
      "VALUES (?, ?, ?, ?, ?, ?, ?)", values.concat(page.Bag("owner"), new Date().toISOString().slice(0, 16)));
    page.SetView("thanks", entry.name);
    page.AddMessage("Thank you, (#*thanks#).", "notice");
  } else {
    database.run(page, "UPDATE entries SET name = ?, topic = ?, mood = ?, hidden = ?, words = ? " +
      "WHERE id = ? AND owner = ?", values.concat(Number(entry.id), page.Bag("owner")));
    page.AddMessage(1, "notice");
  }
  On_StartProcess(page);
}

function OnCommand_Edit(page) {
  var found = database.rows(page, "SELECT id, name, topic, mood, hidden, words FROM entries " +
    "WHERE id = ? AND owner = ?", [Number(Request.QueryString("id")) || 0, page.Bag("owner")]);
  if (!found.length) return page.AddMessage(3, "notice");
  found[0].hidden = found[0].hidden ? "yes" : "";
  fill(page, found[0]);
}

function OnCommand_Delete(page) {
  database.run(page, "DELETE FROM entries WHERE id = ? AND owner = ?",
    [Number(Request.Form("id")) || 0, page.Bag("owner")]);
  page.AddMessage(2, "notice");
}

// What the form shows: each field is an item of View, as PutIntoView leaves it too.
function fill(page, entry) {
  fields.forEach(function (name) { page.SetView(name, entry[name]); });
}

// --- drawing

function On_StartDraw(page) {
  var seen = "hidden = 0 OR owner = ?", owner = page.Bag("owner");
  var count = database.rows(page, "SELECT COUNT(*) AS entries FROM entries WHERE " + seen, [owner])[0].entries;
  pageCount = Math.max(1, Math.ceil(count / perPage));
  listPage = Math.min(pageCount, Math.max(1, parseInt(Request.QueryString("p"), 10) || 1));
  page.SetView("count", count);
  page.SetView("formTitle", page.View("id") == "" ? "Sign the book" : "Change an entry");
  commandField = page.ToCommand("").slice(1, -2);
}

function OnDraw_IfChanging(page, texts) { if (page.View("id") != "") page.ProcessTemplate(texts[0]); }

// The entries of one page of the list, each drawn by a child templator. Its function marks call Row_….
function OnDraw_Entries(page, texts) {
  var owner = page.Bag("owner");
  var rows = database.rows(page, "SELECT id, name, topic, mood, hidden, words, written, owner FROM entries " +
    "WHERE hidden = 0 OR owner = ? ORDER BY id DESC LIMIT ? OFFSET ?", [owner, perPage, (listPage - 1) * perPage]);
  if (!rows.length) return page.ProcessTemplate(texts[0]);
  var row = page.NewTemplator("Row_");
  row.Script = this;
  row.Stream = Response;
  rows.forEach(function (entry) {
    Object.keys(entry).forEach(function (name) { page.SetView("row_" + name, entry[name]); });
    page.SetView("row_is_mine", entry.owner == owner);
    row.ProcessTemplateFile(Server.MapPath("templates/entry.html"), "UTF-8");
  });
}

function Row_Written(row) { row.Write(String(page.View("row_written")).replace("T", ", "), true); }

function Row_IfMine(row, texts) { if (page.View("row_is_mine")) row.ProcessTemplate(texts[0]); }

function Row_IfHidden(row, texts) { if (page.View("row_hidden")) row.ProcessTemplate(texts[0]); }

function Row_EditLink(row) { row.Write(page.ToCommand("Edit") + page.ToParameter("id", String(page.View("row_id"))), true); }

function OnDraw_Pages(page, texts) {
  if (pageCount < 2) return;
  for (var number = 1; number <= pageCount; number++) {
    page.SetView("number", number);
    page.SetView("link", page.ToCommand("List") + page.ToParameter("p", String(number)));
    page.ProcessTemplate(texts[number == listPage ? 1 : 0]);
  }
}
%>
