<%
// What Response.Write makes of every kind of value.
var connection = Server.CreateObject("ADODB.Connection");
connection.Open("Driver=SQLite3;Database=:memory:");
connection.Execute("CREATE TABLE t (name TEXT, note TEXT)");
connection.Execute("INSERT INTO t VALUES ('one', NULL)");
var rows = connection.Execute("SELECT name, note FROM t");
var cyclic = [1];
cyclic.push(cyclic);
var list = Server.CreateObject("Scripting.Dictionary");
var ran = 0;
function counts() { ran++; }
function write(name, value) {
  Response.Write(name + ": <");
  try {
    Response.Write(value);
  } catch (error) {
    Response.Write(error.message);
  }
  Response.Write(">\n");
}
write("undefined", undefined);
write("null", null);
write("session", Session("none"));
write("query", Request.QueryString("none"));
write("NULL column", rows("note"));
write("column", rows("name"));
write("booleans", [true, false]);
write("number", 1.5);
write("numbers", [NaN, Infinity, -Infinity, -0.25, 1e21]);
write("date", new Date(2001, 1, 3, 4, 5, 6));
write("day", new Date(2001, 1, 3));
write("array", [1, "b", null, [2, [3]], undefined]);
write("bytes", new Uint8Array([0, 255]));
write("cyclic", cyclic);
write("dictionary", list);
write("object", { a: 1 });
write("own text", { toString: function () { return "own"; } });
write("function", counts);
write("failing", { toString: function () { throw new Error("no text"); } });
Response.Write(ran + " calls\n");
%>
