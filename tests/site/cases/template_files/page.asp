<%
// From a template's name to its file: folder, extension, charset, permission, and the name of another one.
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.TemplateFolder = Server.MapPath("tpl");
mirt.TemplateExt = ".html";
var v = "v";
function draw(name) {
  try {
    mirt.DrawTemplate(name);
    Response.Write("\n");
  } catch (e) {
    var text = e.message.replace(/\[[^\]]*[\/\\]case[\/\\]/, "[").replace(/\\/g, "/");
    Response.Write(text + "|" + e.source + "|" + (e.number >>> 0).toString(16) + "\n");
  }
}
["page", "/page", "\\page", "parts/../page", "PARTS\\inner", "parts\\inner", "parts/inner"].forEach(draw);
draw("../other/a");
mirt.TemplatePermissionPath = Server.MapPath(".");
draw("../other/a");
mirt.TemplatePermissionPath = Server.MapPath("OTHER");
draw("../other/a");
draw("page");
mirt.TemplatePermissionPath = "";
mirt.TemplateCharset = "windows-1252";
draw("latin");
mirt.TemplateCharset = "no such charset";
draw("latin");
mirt.TemplateCharset = "UTF-8";
draw("broken");
draw("none");
// The script is told of a file that cannot be read; only False asks for another template.
var told = 0, answer;
this.On_TemplateNotFound = function (m) { told++; m.Template = "other"; return answer; };
draw("none");
answer = 0;
draw("none");
answer = true;
draw("none");
answer = false;
draw("none");
draw("parts\\around");
this.OnTemplate_other = function (m) { m.Write("by function", false); };
draw("none");
this.On_TemplateNotFound = function () { throw new Error("own words"); };
draw("none");
Response.Write(told + "\n");
mirt.TemplateFolder = "";
draw("page");
mirt.TemplateFolder = Server.MapPath("tpl") + "/";
draw("page");
mirt.TemplateExt = "";
draw("page");
draw("page.html");
mirt.CacheTemplate = false;
draw("page.html");
draw("broken.html");
%>
