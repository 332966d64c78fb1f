<%@ EnableSessionState="False" %><%
// A dictionary, one within it, and a stream that goes from bytes to text.
var table = Server.CreateObject("Scripting.Dictionary");
for (var i = 0; i < 100; i++) table.Add("key " + i, "value " + i);
var outer = Server.CreateObject("Scripting.Dictionary");
outer.Add("inner", table);
var stream = Server.CreateObject("ADODB.Stream");
stream.Type = 2;
stream.Charset = "utf-8";
stream.Open();
for (i = 0; i < 100; i++) stream.WriteText(outer.Item("inner").Item("key " + i) + "\n");
stream.Position = 0;
Response.Write(stream.ReadText(-1).length);
%>
