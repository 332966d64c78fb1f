<%
// What goes wrong with a database, as a script sees it.
function tell(what, f) {
  try { Response.Write(what + ": " + f() + "\n"); }
  catch (e) { Response.Write(what + ": " + e.message + " | " + e.source + " | " + (e.number >>> 0).toString(16) + "\n"); }
}
var conn = Server.CreateObject("ADODB.Connection"), rs = Server.CreateObject("ADODB.Recordset");
tell("no string", function () { return conn.Open(); });
tell("closed", function () { return conn.Execute("SELECT 1"); });
tell("no connection", function () { return rs.Open("SELECT 1"); });
tell("driver", function () { return conn.Open("Driver=NoSuch"); });
conn.Open("Driver=SQLite3;Database=:memory:");
tell("open twice", function () { return conn.Open(); });
tell("syntax", function () { return conn.Execute("SELEKT 1"); });
var error = conn.Errors(0);
Response.Write([conn.Errors.Count, error.SQLState, error.NativeError, error.Description, (error.Number >>> 0).toString(16), error.Source].join(" | ") + "\n");
tell("no such error", function () { return conn.Errors(1); });
conn.Errors.Clear();
tell("cleared", function () { return conn.Errors.Count; });
conn.Execute("CREATE TABLE t (id INTEGER PRIMARY KEY, name TEXT)");
conn.Execute("INSERT INTO t VALUES (1, 'one')");
tell("table", function () { return conn.Execute("SELECT * FROM nowhere"); });
tell("constraint", function () { return conn.Execute("INSERT INTO t VALUES (1, 'two')"); });
tell("zero", function () { return conn.Execute("SELECT 1\0"); });
tell("empty", function () { return Server.CreateObject("Mirt").NewADOCommand(conn, "", 1).Execute(); });
tell("type", function () { return Server.CreateObject("Mirt").NewADOCommand(conn, "SELECT 1", 77); });
tell("no connection object", function () { return Server.CreateObject("Mirt").NewADOCommand({}, "SELECT 1", 1); });
var cmd = Server.CreateObject("Mirt").NewADOCommand(conn, "SELECT name FROM t WHERE id = ?", 1);
cmd.Parameters.Append(cmd.CreateParameter("key", 3));
tell("conversion", function () { cmd("key") = "x"; return cmd.Execute(); });
tell("object", function () { cmd("key") = {}; return cmd.Execute(); });
tell("zero in a value", function () { cmd("key").Type = 202; cmd(0) = "a\0b"; return cmd.Execute(); });
tell("parameter", function () { return cmd.Parameters("none").Value; });
tell("longer than its time-out", function () {
  conn.CommandTimeout = 1;
  return conn.Execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT COUNT(*) FROM n");
});
tell("full", function () {
  conn.Execute("PRAGMA max_page_count = 10");
  return conn.Execute("CREATE TABLE big AS SELECT randomblob(1000000) AS b");
});
rs = conn.Execute("SELECT * FROM t");
tell("field", function () { return rs("none"); });
tell("field number", function () { return rs(2); });
tell("write", function () { rs("name") = "x"; });
tell("back", function () { return rs.MovePrevious(); });
rs.MoveNext();
tell("no row", function () { return String(rs("name")); });
tell("past the end", function () { return rs.MoveNext(); });
tell("rows", function () { return rs.GetRows(); });
rs.Close();
tell("closed rows", function () { return rs.EOF; });
tell("member", function () { return rs.Explode(); });
tell("commit", function () { return conn.CommitTrans(); });
tell("afterwards", function () { return conn.Execute("SELECT name FROM t")(0); });
%>
