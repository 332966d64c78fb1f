<%
// An edited template shows, also under a name that goes through a folder which is not there.
var files = Server.CreateObject("Scripting.FileSystemObject");
function write(text) {
  var file = files.CreateTextFile(Server.MapPath("tpl/t.html"), true);
  file.Write(text);
  file.Close();
}
function draw(name) {
  var mirt = Server.CreateObject("Mirt");
  mirt.TemplateFolder = Server.MapPath("tpl");
  mirt.TemplateExt = ".html";
  mirt.DrawTemplate(name);
  Response.Write("|");
}
write("first");
draw("t");
draw("gone/../t");
draw("gone\\deep\\..\\..\\t");
write("second, of another length");
draw("t");
draw("gone/../t");
draw("gone\\deep\\..\\..\\t");
%>