<%
// A variable that holds an object of the host is a value of the page, although every such object can be called.
var dictionary = Server.CreateObject("Scripting.Dictionary");
dictionary("k") = "a<b";
var connection = Server.CreateObject("ADODB.Connection");
connection.Open("Driver=SQLite3;Database=:memory:");
var rs = connection.Execute("SELECT 'Ann' AS name");
var field = rs("name");
var values = Request.QueryString("a");
var nested = { d: dictionary, get lazy() { return dictionary; }, f: function () { return "called"; } };
var stored;
var method = dictionary.Exists;
function called(templator, parameters) { return "called with " + parameters; }

var page = Server.CreateObject("Mirt");
page.Script = this;
page.Name = "page";

function draw(templator, kind, text) {
  Response.Write(kind + " " + text + ": ");
  try {
    templator.ProcessTemplate(text);
    if (templator !== page) {
      Response.Write(templator.Flush().slice(written[kind] || 0));
      written[kind] = templator.Flush().length;
    }
  } catch (e) {
    Response.Write("failed: " + e.message);
  }
  Response.Write("\n");
}
var written = {};

function On_StartProcess() {
  page.PutIntoProp("stored", false);
  var child = page.NewTemplator("");
  child.Script = page.Script;
  var alone = Server.CreateObject("Mirt.TextTemplator");
  alone.Script = page.Script;
  var marks = ["dictionary|k", "rs|name", "field", "values", "values|2", "nested|d#|#k", "nested|lazy#|#k", "stored",
    "called|x#|#y"];
  for (var i = 0; i < marks.length; i++) {
    draw(page, "page", "(#:" + marks[i] + "#)");
    draw(page, "page", "(#;" + marks[i] + "#)");
    draw(child, "child", "(#:" + marks[i] + "#)");
    draw(alone, "alone", "(#" + marks[i] + "#)");
  }
  draw(page, "page", "(#%_InputDefaultP|values#|#1, 2#|#same#|#other#)");
  draw(page, "page", "(#%_InputDefaultP|field#|#Ann#|#same#|#other#)");
  draw(page, "page", "(#%_InputDefaultP|stored#|#7#|#same#|#other#)");
  draw(page, "page", "(#%_InputDefaultP|stored#|#8#|#same#|#other#)");
  Response.Write(stored + "\n");
  return false;
}
page.Process();
// Only a function can be fired as an event.
try { page.FireEvent("dictionary", 1, 2); } catch (e) { Response.Write(e.message + "\n"); }
%>
