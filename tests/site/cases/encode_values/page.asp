<%
// A missing value is not a text, for the encoders too.
var connection = Server.CreateObject("ADODB.Connection");
connection.Open("Driver=SQLite3;Database=:memory:");
var row = connection.Execute("SELECT NULL AS note, '<b>' AS name, x'0041FF' AS picture");
var nothing = { "a null": null, "a NULL field": row("note"), "no field": Request.QueryString("none") };
for (var name in nothing) {
  var value = nothing[name];
  Response.Write(name + ": [" + Server.HTMLEncode(value) + "] [" + Server.URLEncode(value) + "] " +
    (Server.MapPath(value) === Server.MapPath("")) + "\n");
}
Response.Write(Server.HTMLEncode(row("name")) + " " + Server.URLEncode([1, "a b"]) + "\n");
Response.BinaryWrite("text \u00e4 ");
Response.BinaryWrite(row("note"));
Response.BinaryWrite(row("picture"));
try {
  Response.BinaryWrite({ toString: function () { return "no bytes"; } });
} catch (error) {
  Response.Write("\n" + error.message + "\n");
}
%>
