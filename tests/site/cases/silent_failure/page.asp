<%@ Language="JavaScript" EnableSessionState="False" %><%
// A failure without words shows none, whatever the component went on from before it.
var alone;
function tell(f) {
  try { f(); } catch (e) {
    if (!alone) alone = e.message;
    Response.Write((e.number >>> 0).toString(16) + (e.message === alone ? "" : " " + e.message) + "\n");
  }
}
function controller() {
  var mirt = Server.CreateObject("Mirt");
  mirt.Script = this_;
  mirt.TemplateFolder = Server.MapPath("tpl");
  mirt.TemplateExt = ".html";
  return mirt;
}
var this_ = this;
function On_TemplateNotFound(m) { m.Template = "other"; return false; }
// A session mark on a page without one, alone.
tell(function () { controller().ProcessTemplate("(#=s#)"); });
// Behind a template that could not be read, and was replaced.
tell(function () { controller().ProcessTemplate("(#`gone#)(#=s#)"); });
// Behind a Form that cannot be read, as the body was taken for the upload.
tell(function () {
  var mirt = controller();
  mirt.Process();
  try { Request.Form("a"); } catch (e) { Response.Write(e.message + "\n"); }
  mirt.ProcessTemplate("(#\\a#)(#\\none#)(#=s#)");
});
%>