<%
// Each source has a mark that encodes and one that does not.
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.Name = "app";
mirt.TemplateFolder = Server.MapPath("tpl");
mirt.TemplateExt = ".html";
mirt.SelfEncode = true;
var v = "<v>";
var list = ["<0>", "<1>"];
function f(m, a) { return "<f" + a.length + a[0] + a[1] + ">"; }
function nothing() { }
function OnDraw_own(m, a) { m.Write("<own" + a.length + ">", true); }
Session("s") = "<s>";
Application("a") = "<a>";
function On_StartDraw(m) {
  m.SetView("w", "<w>");
  m.Bag("b") = "<b>";
  m.Include("part") = "part";
  m.Include("number") = 5;
}
mirt.Template = "main";
mirt.Process();
mirt.ProcessTemplate("\n(#+a#)(#-a#)\n");
%>
