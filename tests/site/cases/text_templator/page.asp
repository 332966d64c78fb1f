<%
var t = Server.CreateObject("Mirt.TextTemplator");
function tell(f) { try { Response.Write(f() + "\n"); } catch (e) { Response.Write(e.message + "|" + (e.number >>> 0).toString(16) + "\n"); } }
Response.Write("[" + t.Flush() + "]\n");
tell(function () { return t.ProcessTemplate("(#Unknown#)"); });
t.Write("a");
t.Write("b");
tell(function () { return t.Flush() + t.Flush(); });
t.Script = { Title: "first", only: "one", list: ["x", { Name: "deep" }], nothing: function () { }, nil: null,
             rows: function (me, a) { return a.length + ":" + a.join("+"); } };
t.Script = { title: "second", Title: "second" };
t.ProcessTemplate("|(#Title#)|(#only#)|(#list|0#)|(#list|1#|#Name#)|(#rows#)|(#rows|p#|#q#)|(#nothing#)|(# note #)(#\tx#)(#\nx#)|");
tell(function () { return t.Flush(); });
tell(function () { return t.ProcessTemplate("(#nil#)"); });
tell(function () { return t.ProcessTemplate("(#list|9#)"); });
tell(function () { return t.ProcessTemplate("(#Title"); });
tell(function () { return t.ProcessTemplate("#)"); });
tell(function () { return t.Script.Title; });
var values = Server.CreateObject("Scripting.Dictionary");
values("key one") = "by key";
var d = Server.CreateObject("Mirt.TextTemplator");
d.Script = values;
d.ProcessTemplate("(#key one#)");
tell(function () { return d.Flush(); });
// Into a stream of the page's.
var stream = Server.CreateObject("ADODB.Stream");
stream.Open();
d.Stream = stream;
d.ProcessTemplate("<(#key one#)>");
tell(function () { return d.Flush(); });
stream.Position = 0;
tell(function () { return stream.ReadText(); });
var mirt = Server.CreateObject("Mirt");
mirt.Output = stream;
mirt.Write("tail", false);
stream.Position = 0;
tell(function () { return stream.ReadText(); });
tell(function () { return d.ProcessTemplateFile(Server.MapPath("file.txt"), "windows-1252"); });
tell(function () { return d.Flush(); });
%>
