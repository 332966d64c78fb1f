<%
// Drawing into a file: a text stream as the output of the page object and of both templators.
var files = Server.CreateObject("Scripting.FileSystemObject");
var path = Server.MapPath("drawn.txt");
function drawn(draw) {
  var file = files.CreateTextFile(path, true);
  try {
    draw(file);
    file.Close();
    file = files.OpenTextFile(path, 1);
    return file.ReadAll();
  } finally {
    file.Close();
    files.DeleteFile(path);
  }
}
var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);
mirt.Name = "app";
var name = "<Änne 😀>";
function Row_Name(row) { row.Write(name, true); }
Response.Write("page: " + drawn(function (file) {
  mirt.Output = file;
  mirt.ProcessTemplate("a(#;name#)b(#:name#)^(#");
  mirt.Write("&", true);
}) + "\n");
Response.Write("text: " + drawn(function (file) {
  var text = Server.CreateObject("Mirt.TextTemplator");
  text.Script = { name: name };
  text.Stream = file;
  text.ProcessTemplate("a(#name#)(# note #)");
  text.Write("b");
  try { text.Flush(); } catch (e) { text.Write(" " + (e.number >>> 0).toString(16)); }
}) + "\n");
function OnTemplate_rows(m) {
  Response.Write("rows: " + drawn(function (file) {
    var rows = m.NewTemplator("Row_");
    rows.Script = this_;
    rows.Stream = file;
    rows.ProcessTemplate("1 (#%Name#)\n2 (#:name#)\n");
  }));
}
var this_ = this;
mirt.Output = Response;
mirt.DefaultTemplate = "rows";
mirt.Process();
// One that is closed takes nothing.
var closed = files.CreateTextFile(path, true);
closed.Close();
mirt.Output = closed;
try { mirt.Write("x", false); Response.Write("written\n"); } catch (e) { Response.Write(e.message + "\n"); }
files.DeleteFile(path);
mirt.Output = Response;
mirt.Write(String(files.FileExists(path)), false);
%>
