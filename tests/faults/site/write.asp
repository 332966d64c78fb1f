<%@ EnableSessionState="False" %><%
// Keeps one number, and says so once it is kept.
var connection = Server.CreateObject("ADODB.Connection");
connection.Open("Driver=SQLite3;Timeout=10000;Database=" + Server.MapPath("app_data/numbers.db"));
connection.Execute("CREATE TABLE IF NOT EXISTS numbers (n INTEGER PRIMARY KEY)");
connection.Execute("INSERT INTO numbers (n) VALUES (" + parseInt(Request.QueryString("n"), 10) + ")");
connection.Close();
Response.Write("kept");
%>
