<%
// An expression of the page writes what Response.Write writes, for every kind of value.
var connection = Server.CreateObject("ADODB.Connection");
connection.Open("Driver=SQLite3;Database=:memory:");
var rs = connection.Execute("SELECT NULL AS none, 'x<' AS text, 12 AS number");
var values = [undefined, null, true, false, 0, -1.5, 1 / 3, 3000000000, "text", Session("none"), Request("none"),
  rs("none"), rs("none").Value, rs("text"), rs("number"), rs("none") + "", Request.QueryString("a"),
  new Date(2030, 6, 4, 10, 30), [1, [2, "b"], null], {}, function () { return 1; }, rs.EOF, rs.Fields.Count, NaN,
  -Infinity, 12345678901n, new String("object"), Request.QueryString];
for (var i = 0; i < values.length; i++) {
%><%= i %>: [<%= values[i] %>][<% Response.Write(values[i]); %>]
<%
}
%>
