<%@ LANGUAGE=JScript codepage=65001 %>
<script language="JScript" runat="server">
function line(name, value) { Response.Write(name + ": " + value + "\n"); }
function problem(f) {
  try { f(); return "no error"; } catch (e) { return e.name + ": " + (e.description || e.message); }
}
</script>
<%
// What authors of classic pages write: any letter case, methods without parentheses, objects that are called.
var conn = Server.createobject("ADODB.Connection");
conn.open("Driver=SQLite3;Database=:memory:");
conn.execute("CREATE TABLE t (id INTEGER, name TEXT)");
conn.Execute("INSERT INTO t VALUES (1, 'one')"); conn.Execute("INSERT INTO t VALUES (2, NULL)");
var rs = Server.CreateObject("ADODB.Recordset");
rs.Open("SELECT id, name FROM t ORDER BY id", conn, 3, 1);
line("rows", rs.recordcount);
while (!rs.EOF) {
%><li><%= rs("id") %> <%= rs.Fields.Item("name").value + "" %></li>
<%
  rs.MoveNext;
}
rs.MoveFirst
line("cells", new VBArray(rs.GetRows()).toArray().join("|"));
rs.Close;
line("state", rs.State);
conn.Close
line("closed", conn.State);

var stream = new ActiveXObject("ADODB.Stream");
stream.Open;
stream.WriteText("text of the stream");
stream.Position = 0;
var content = stream.ReadText;
line("stream", content);
stream.Close;

var dict = Server.CreateObject("Scripting.Dictionary");
dict.Add("one", 1);
dict("two") = 2;
dict.Item("three") = 3;
var seen = [];
for (var e = new Enumerator(dict); !e.atEnd(); e.moveNext()) seen.push(e.item() + "=" + dict(e.item()));
line("dictionary", seen.join());
seen = [];
for (var f = new Enumerator(Request.Form); !f.atEnd(); f.moveNext())
  for (var i = 1; i <= Request.Form(f.item()).Count; i++) seen.push(f.item() + "=" + Request.Form(f.item())(i));
line("form", seen.join());
line("keys", new VBArray(dict.Keys()).toArray().join());
line("keys", new VBArray(dict.Keys).getItem(1) + new VBArray(dict.Keys).ubound(1));

line("a", Request("a"));
line("b", Request("B") == "two");
line("count", Request.QueryString("a").Count + Request.Form("x").count);
line("item", Request.Form("x")(2) + Request.QueryString.Item("a").Item(1));
line("missing", Request.Form("nothing") + "," + Request.QueryString("nothing").Count + "," + Request("nothing"));
line("is missing", (Request("nothing") == null) + "," + (String(Request.Form("nothing")) == "undefined"));
line("method", Request.ServerVariables("request_method"));

Session("n") = 1;
Session("N") += 1;
Session.Contents("list") = dict;
line("session", Session.Contents("n") + "," + Session.contents.Item("list").Count + "," + Session("list")("two"));
Application.Lock;
Application("hits") = (Application("hits") || 0) + 1;
Application.Unlock();
line("application", Application.Contents("hits"));

Response.Write(12.5); Response.Write("|");
Response.Write(null); Response.Write("|");
Response.Write(undefined); Response.Write("|");
Response.Write(true); Response.Write("|");
Response.Write(new Date(2001, 1, 3, 4, 5, 6)); Response.Write("|");
Response.Write(rs.State + 1); Response.Write("\n");

with (Response) { Write("with"); Write("\n"); }
line("octal", 010);
var hidden = "script"; <!-- hidden from browsers
line("hidden", hidden);
line("no class", problem(function () { new ActiveXObject("No.Such"); }));
line("no member", problem(function () { conn.NoSuch(); }));
line("no array", problem(function () { new VBArray("text"); }));
line("not callable", problem(function () { line("a") = 1; }));
Response.End
line("never", "written");
%>
