<%
// What the older dialect has beside the language.
function told(name, value) { Response.Write(name + ": " + value + "\n"); }
function caught(run) { try { run(); } catch (e) { return e.description + ", " + (e.number & 0xFFFF); } return "nothing"; }

told("undeclared", caught(function () { nowhere(); }));
told("own", caught(function () { throw new Error(5, "text"); }));
told("object", caught(function () { var o = null; o.x; }));
told("host", caught(function () { Server.MapPath("../.."); }));
var e = new Error(17, "d");
told("error", e.number + " " + e.description + " " + e.message + " " + e);
told("years", new Date(1999, 0, 1).getYear() + " " + new Date(2000, 0, 1).getYear() + " " + new Date(1899, 11, 31).getYear());
var date = new Date(2030, 6, 4, 10, 30);
told("getVarDate", date.getVarDate().getTime() === date.getTime());
told("engine", [ScriptEngine(), ScriptEngineMajorVersion(), ScriptEngineMinorVersion(), ScriptEngineBuildVersion()]);
told("garbage", CollectGarbage());

var connection = Server.CreateObject("ADODB.Connection");
connection.Open("Driver=SQLite3;Database=:memory:");
var rs = connection.Execute("SELECT 1 AS a, 'x' AS b UNION SELECT 2, 'y' ORDER BY 1");
told("EOF", rs.EOF() + " " + rs.eof() + " " + rs.BOF() + " " + rs.Fields.Count());
told("rows", rs.GetRows().toArray());
rs.Close();
rs = connection.Execute("SELECT 1 AS a, 'x' AS b UNION SELECT 2, 'y' ORDER BY 1");
var rows = rs.GetRows();
told("array", [rows.dimensions(), rows.ubound(1), rows.ubound(2), rows.lbound(1), rows.getItem(1, 1)]);
rs.Close();
told("state", rs.State() + " " + connection.state());
var d = Server.CreateObject("Scripting.Dictionary");
d.Add("k", "v");
told("count", d.Count() + " " + d.count());
told("keys", d.Keys().toArray() + " " + d.Items().getItem(0));
told("typeof", typeof d + " " + typeof d("k") + " " + typeof d.NoSuch);
told("for in", (function () { var names = []; for (var n in rows) names.push(n); return names; })());
%>
