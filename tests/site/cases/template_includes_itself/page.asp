<%
// A template that draws itself is told as that, not as a file that can't be read: with a script to ask and
// without, from the cache and streamed. The script is asked about no missing template either.
function told(e) { return (e.number >>> 0).toString(16) + " " + e.message + "\n"; }
function On_TemplateNotFound() { Response.Write("asked\n"); }
function draw(cached, script) {
  var mirt = Server.CreateObject("Mirt");
  if (script) mirt.Script = script;
  mirt.TemplateFolder = Server.MapPath("tpl");
  mirt.TemplateExt = ".html";
  mirt.Template = "loop";
  mirt.CacheTemplate = cached;
  mirt.Output = Server.CreateObject("Mirt.TextTemplator").Stream;
  try { mirt.Process(); } catch (e) { Response.Write(told(e)); }
}
draw(true);
draw(false);
draw(true, this);
draw(false, this);
%>