<%
// A database as page scripts write it: names in any letter case, default members, calls without parentheses.
var conn = Server.CreateObject("ADODB.Connection");
conn.open("Driver=SQLite3;Database=:memory:");
conn.execute("CREATE TABLE item (id INTEGER, name VARCHAR(40), price DOUBLE, sold BOOLEAN, made TIMESTAMP, pic BLOB)");
function line() { Response.Write(Array.prototype.join.call(arguments, " ") + "\n"); }

var cmd = new ActiveXObject("ADODB.Command");
cmd.ActiveConnection = conn;
cmd.CommandText = "INSERT INTO item VALUES (?, ?, ?, ?, ?, ?)";
cmd.CommandType = 1;
cmd.Prepared = true;
cmd.Parameters.Append(cmd.CreateParameter("id", 20, 1));
cmd.parameters.append(cmd.createParameter("name", 202, 1, 40));
cmd.Parameters.Append(cmd.CreateParameter("price", 5));
cmd.Parameters.Append(cmd.CreateParameter("sold", 11));
cmd.Parameters.Append(cmd.CreateParameter("made", 135));
cmd.Parameters.Append(cmd.CreateParameter("pic", 205));
line(cmd.Parameters.Count, cmd(1).Name, cmd("PRICE").Type, cmd.Parameters.Item(0).Direction);
var rows = [[1, "it's; DROP TABLE item; --", 0.1, true, new Date(Date.UTC(2024, 1, 29, 6)), new Uint8Array([0, 255])],
            [9007199254740991, "日本 😀", -2.5, false, null, null], [3, null, null, null, null, new ArrayBuffer(3)]];
rows.forEach(function (row) {
  row.forEach(function (value, i) { cmd(i) = value; });
  cmd.Execute();
});
line("values of the call:", cmd.Execute(undefined, [4, "four", 4, false, null, null]).State);

var rs = Server.CreateObject("ADODB.Recordset");
rs.Open("SELECT * FROM item ORDER BY rowid", conn, 1, 2);
line(rs.RecordCount, rs.EOF, rs.bof, rs.State, rs.Fields.Count);
line(rs("name") + "", rs.Fields.Item("NAME").value == rs("name").Value, rs(0), rs.fields(2).Value + 1, rs("sold"));
line(rs("made").Value.toISOString(), rs("pic").Value.constructor.name, rs("pic").Value.join());
rs.MoveNext;
line(rs("id") == 9007199254740991, rs("name"), rs("name").ActualSize, rs("made").Value === null, typeof rs("price").Value);
rs.Move(1);
line(rs("name").Value === null, rs("sold").Value === null, rs("pic").Value.length);
rs.movefirst;
line(rs(0), rs.AbsolutePosition);
var array = rs.GetRows();
line(array.length, array[0].length, array[1][3], new VBArray(array).ubound(2), rs.EOF);
rs.Close;
line(rs.State, Server.CreateObject("ADODB.Recordset").State);

rs = conn.Execute("SELECT id FROM item WHERE id > 3");
for (var all = []; !rs.EOF; rs.MoveNext()) all.push(String(rs("id")));
line(all, rs.RecordCount, conn.Execute("DELETE FROM item WHERE id = 4").State);

// Keys that no number of a script holds.
conn.Execute("CREATE TABLE far (id BIGINT)");
var far = Server.CreateObject("Mirt").NewADOCommand(conn, "INSERT INTO far VALUES (?)", 1);
["9007199254740993", -9223372036854775808n].forEach(function (id) { far.Execute(undefined, [id]); });
rs = conn.Execute("SELECT id FROM far WHERE id > 0");
line(rs("id"), rs("id") + "", rs("id").Value == "9007199254740993", typeof rs("id").Value);
far.CommandText = "SELECT COUNT(*) FROM far WHERE id = ?";
line(far.Execute(undefined, [rs("id").Value])(0), conn.Execute("SELECT MIN(id) FROM far")(0));

// The component's own way to a command.
var mirt = Server.CreateObject("Mirt");
var made = mirt.NewADOCommand(conn, "SELECT COUNT(*) FROM item WHERE name LIKE ?", 1);
made.Parameters.Append(made.CreateParameter("", 202, 1, 10, "%DROP%"));
line(made.Execute().Fields(0), made.CommandText, made.CommandTimeout, made.Name === "", made.State);

line(conn.BeginTrans(), conn.Execute("DELETE FROM item").State, conn.RollbackTrans() === undefined);
line(conn.Execute("SELECT COUNT(*) FROM item")(0));
conn.Close();
line(conn.State, conn.ConnectionTimeout, conn.CommandTimeout);
%>
