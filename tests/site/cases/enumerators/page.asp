<%
// Enumerator over the host's collections.
function all(collection, show) {
  var found = [];
  for (var e = new Enumerator(collection); !e.atEnd(); e.moveNext()) found.push(show ? show(e.item()) : e.item());
  return found.join(",");
}
function line(name, text) { Response.Write(name + ": " + text + "\n"); }
line("QueryString", all(Request.QueryString) + " / " + all(Request.QueryString("a")));
line("Form", all(Request.Form) + " / " + all(Request.Form("x")));
line("Cookies", all(Request.Cookies));
line("ServerVariables", /,REQUEST_METHOD,/.test("," + all(Request.ServerVariables) + ","));
Session("one") = 1;
Session("two") = "2";
line("Session", all(Session.Contents, function (key) { return key + "=" + Session(key); }));
Application("app") = 1;
line("Application", all(Application.Contents));
var dictionary = Server.CreateObject("Scripting.Dictionary");
dictionary.Add("b", 1);
dictionary.Add("a", 2);
line("Dictionary", all(dictionary));
var conn = Server.CreateObject("ADODB.Connection");
conn.Open("Driver=SQLite3;Database=:memory:");
var rows = conn.Execute("SELECT 1 AS id, 'x' AS name");
line("Fields", all(rows.Fields, function (field) { return field.Name + "=" + field.Value; }) + " / " + all(rows.Fields));
var command = Server.CreateObject("ADODB.Command");
command.Parameters.Append(command.CreateParameter("p", 3, 1, 0, 7));
line("Parameters", all(command.Parameters, function (p) { return p.Name + "=" + p; }));
try { conn.Execute("nonsense"); } catch (error) { line("Errors", all(conn.Errors, function (e) { return e.SQLState; })); }
line("array", all([1, 2]));
line("empty", all(Server.CreateObject("Scripting.Dictionary")) + "|" + new Enumerator(dictionary).item());
var e = new Enumerator(dictionary);
e.moveNext();
e.moveNext();
line("ends", [e.atEnd(), e.item(), (e.moveFirst(), e.item())]);
%>
