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
try {
  page.Process();
} catch (error) {
  // A link may be old, and anybody can type a command that there is not.
  if (!/^Unknown Command /.test(error.message)) throw error;
  Response.Clear();
  Response.Status = "404 Not Found";
  Response.Write("There is no such page.");
}

// --- commands

function On_FirstAccess(page) { page.Bag("owner") = page.MakeGUID(true); }

function On_StartProcess(page) { fill(page, { id: "", name: "", topic: "hello", mood: "happy", hidden: "", words: "" }); }

// No command that this page knows. A form that was sent nevertheless comes from a page that is out of date:
// the back button brought it back, or another window's form was sent first. What is in it is not lost.
function OnCommand_(page) {
  if (Request.ServerVariables("REQUEST_METHOD") != "POST") return;
  page.AddMessage(2, "warning");
  if (Request.Form("words").Count) takeForm(page);
}

// The list's own links; which page of it is shown is a parameter.
function OnCommand_List() {}

function OnCommand_Save(page) {
  takeForm(page);
  var entry = {};
  fields.forEach(function (name) { entry[name] = (page.Trim(page.View(name)) || "").replace(/\r\n/g, "\n"); });
  if (entry.name == "") page.AddMessage(1, "problem");
  if (entry.name.length > 80) page.AddMessage(2, "problem");
  if (entry.words == "") page.AddMessage(3, "problem");
  if (entry.words.length > 2000) page.AddMessage(4, "problem");
  if (page.MessageExists("problem")) return;
  var values = [entry.name, entry.topic, entry.mood, entry.hidden == "yes" ? 1 : 0, entry.words];
  if (entry.id == "") {
    database.run(page, "INSERT INTO entries (name, topic, mood, hidden, words, owner, written) " +
      "VALUES (?, ?, ?, ?, ?, ?, ?)", values.concat(page.Bag("owner"), new Date().toISOString().slice(0, 16)));
    page.SetView("thanks", entry.name);
    page.AddMessage("Thank you, (#*thanks#).", "notice");
  } else {
    if (!ownEntry(page, entry.id)) return page.AddMessage(1, "warning");
    database.run(page, "UPDATE entries SET name = ?, topic = ?, mood = ?, hidden = ?, words = ? " +
      "WHERE id = ? AND owner = ?", values.concat(toId(entry.id), page.Bag("owner")));
    page.AddMessage(1, "notice");
  }
  On_StartProcess(page);
}

function OnCommand_Edit(page) {
  var entry = ownEntry(page, Request.QueryString("id"));
  if (!entry) return page.AddMessage(1, "warning");
  entry.hidden = entry.hidden ? "yes" : "";
  fill(page, entry);
}

function OnCommand_Delete(page) {
  var entry = ownEntry(page, Request.Form("id"));
  if (!entry) return page.AddMessage(1, "warning");
  database.run(page, "DELETE FROM entries WHERE id = ?", [entry.id]);
  page.AddMessage(2, "notice");
}

// What a form or a link says is the number of an entry; 0, which no entry has, for anything else.
function toId(text) { return /^\d{1,9}$/.test(text) ? Number(text) : 0; }

// The visitor's entry of that number, or undefined.
function ownEntry(page, id) {
  return database.rows(page, "SELECT id, name, topic, mood, hidden, words FROM entries WHERE id = ? AND owner = ?",
    [toId(id), page.Bag("owner")])[0];
}

// What the form shows: each field is an item of View.
function fill(page, entry) {
  fields.forEach(function (name) { page.SetView(name, entry[name]); });
}
function takeForm(page) {
  fields.forEach(function (name) { page.PutIntoView(name, false); });
}

// --- drawing

function On_StartDraw(page) {
  var seen = "hidden = 0 OR owner = ?", owner = page.Bag("owner");
  var count = database.value(page, "SELECT COUNT(*) FROM entries WHERE " + seen, [owner]);
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

// The visitor's time zone is not known here.
function Row_Written(row) { row.Write(String(page.View("row_written")).replace("T", ", ") + " UTC", true); }

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
