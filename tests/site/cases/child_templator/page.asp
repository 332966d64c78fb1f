<%
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.Name = "app";
Session("s") = "<s>";
Application("a") = "<a>";
var v = "<v>", empty = "", nil = null;
function f(t, a) { return "<" + a.join("+") + ">"; }
function Row_line(t, a) { t.Write("<" + a.join("+") + ">", true); t.Write("<" + a.length + ">", false); }
function tell(t, text) {
  try { t.ProcessTemplate(text); } catch (e) { Response.Write(e.message + "|" + e.source + "|" + (e.number >>> 0).toString(16) + "\n"); }
}
function OnTemplate_main(m) {
  m.SetView("w", "<w>");
  m.Bag("b") = "<b>";
  var t = m.NewTemplator("Row_");
  t.Script = this_;
  t.ProcessTemplate("(#%line|x#|#y#)(#%line#)\n");
  t.ProcessTemplate("(#:v#)(#;v#)(#;empty#)(#:f|p#|#q#)\n");
  t.ProcessTemplate("(#/w#)(#*w#)(#~s#)(#=s#)(#-a#)(#+a#)(#\\q#)(#$q#)(#|b#)(#&b#)\n");
  t.ProcessTemplate("(#v#)(#!v#)(#`v#)^(#\n");
  m.SelfEncode = true;
  t.Write("'<>", true);
  m.SelfEncode = false;
  t.Write("", true);
  Response.Write(t.Flush() + "|" + t.flush() + "\n");
  tell(t, "(#%none#)");
  tell(t, "(#:none#)");
  tell(t, "(#:nil#)");
  tell(t, "a(#:v");
  Response.Write(typeof t.Main.Process + "," + t.Main.DefaultTemplate + "\n");
  try { t.Main = m; } catch (e) { Response.Write((e.number >>> 0).toString(16) + "\n"); }
  try { t.Write("a"); } catch (e) { Response.Write((e.number >>> 0).toString(16) + "\n"); }
  t.Stream = Response;
  t.ProcessTemplate("direct (#;v#)\n");
  try { t.Flush(); } catch (e) { Response.Write((e.number >>> 0).toString(16) + "\n"); }
}
var this_ = this;
mirt.DefaultTemplate = "main";
mirt.Process();
%>
