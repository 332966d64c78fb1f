<%
// Words of the language are not names that a page declares, also where it declares some with let.
let declared = "yes";
const fixed = 1;
class Shape {}
var page = Server.CreateObject("Mirt");
page.Script = this;
var words = ["this", "null", "true", "false", "debugger", "super", "typeof", "import", "enum", "new", "yield", "await"];
var told = [];
words.forEach(function (word) {
  var fired = page.FireEvent(word, 1, 2);
  var put, drawn;
  try { page.PutIntoProp(word, false); put = "set"; } catch (e) { put = (e.number >>> 0).toString(16); }
  try { page.ProcessTemplate("(#:" + word + "#)"); drawn = "drawn"; } catch (e) { drawn = e.message; }
  if (fired !== false || put !== "80020006" || drawn !== "Unknown name.[(#:" + word + "#)]") {
    told.push(word + " " + fired + " " + put + " " + drawn);
  }
});
Response.Write(told.length ? told.join("\n") : "none\n");
page.ProcessTemplate("(#:declared#)\n");
%>
