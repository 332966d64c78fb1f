<%@ Language="JavaScript" CodePage="65001" %>
<!--#include file="page.inc"-->
<%
// The notebook. Its entries live in the visitor's session bag, as one JSON text.
var title = "Notebook";
var notice = "";   // what the page tells the visitor about the last command
var problem = "";  // what keeps an entry from being saved

var page = newPage(this);
page.Name = "notebook";
page.Backable = false;  // a form counts once: what the back button brings back is no longer expected
processPage(page);

// --- entries

function load(page) { return JSON.parse(page.Bag.Item("entries")); }

function store(page, entries) { page.Bag.Item("entries") = JSON.stringify(entries); }

function field(name) { return String(Request.Form.Item(name)).trim(); }

function nextId(entries) { return entries.reduce((id, entry) => Math.max(id, entry.id), 0) + 1; }

// --- events

function On_FirstAccess(page) { store(page, []); }

function On_StartProcess(page) { showForm(page, { id: "", name: "", text: "" }); }

// No command that this page knows. A form that was sent nevertheless comes from a page that is out of date.
function OnCommand_(page) {
  if (Request.ServerVariables.Item("REQUEST_METHOD") == "POST")
    notice = "Nothing was changed: that form had been used already, or your browser keeps no cookies.";
}

function OnCommand_Save(page) {
  var id = field("id");
  var entry = { id: Number(id), name: field("name"), text: field("text"), when: new Date().toISOString().slice(0, 16) };
  if (entry.name == "" || entry.text == "") {
    problem = entry.name == "" ? "Please tell us your name." : "Please write something.";
    showForm(page, { id: id, name: entry.name, text: entry.text });
    return;
  }
  var entries = load(page);
  var at = entries.findIndex(e => e.id == entry.id);
  if (at < 0) {
    entry.id = nextId(entries);
    entries.unshift(entry);
  } else {
    entry.when = entries[at].when;
    entries[at] = entry;
  }
  store(page, entries);
  notice = at < 0 ? "Thank you, " + entry.name + "." : "Your changes are saved.";
}

function OnCommand_Edit(page) {
  var entry = load(page).find(e => e.id == Request.QueryString.Item("id"));
  if (entry) showForm(page, entry);
}

function OnCommand_Delete(page) {
  var id = field("id");
  store(page, load(page).filter(e => e.id != id));
  notice = "The entry is deleted.";
}

function showForm(page, entry) {
  page.SetView("FormId", entry.id);
  page.SetView("FormName", entry.name);
  page.SetView("FormText", entry.text);
  page.SetView("FormTitle", entry.id === "" ? "Write a note" : "Change an entry");
}

function On_StartDraw(page) {
  page.SetView("Count", load(page).length);
  page.Include.Item("Content") = "book";
}

// --- drawing: each draws the template text between its bars, or a template file

function OnDraw_Notice(page, texts) {
  if (notice != "") page.ProcessTemplate(texts[0]);
}

function OnDraw_Problem(page, texts) {
  if (problem != "") page.ProcessTemplate(texts[0]);
}

function OnDraw_Entries(page, texts) {
  var entries = load(page);
  if (entries.length == 0) page.ProcessTemplate(texts[0]);
  entries.forEach(entry => {
    page.SetView("Id", entry.id);
    page.SetView("Name", entry.name);
    page.SetView("Text", entry.text);
    page.SetView("When", entry.when.replace("T", ", ") + " UTC");
    page.DrawTemplate("entry");
  });
}
%>
