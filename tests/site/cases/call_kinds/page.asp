<%
// Codes of wrong calls, and names in any letter case.
var mirt = Server.CreateObject("Mirt");
var text = Server.CreateObject("Mirt.TextTemplator");
mirt.Script = this;
function code(f) {
  try { return String(f()); } catch (e) { return (e.number >>> 0).toString(16); }
}
function line(name, f) { Response.Write(name + ": " + code(f) + "\n"); }
function all() {
  line("Process put", function () { mirt.Process = 1; });
  line("Bag put", function () { mirt.Bag = 1; });
  line("unknown", function () { return mirt.Nothing(); });
  line("ToCommand()", function () { return mirt.ToCommand(); });
  line("ToParameter(1)", function () { return mirt.ToParameter("a"); });
  line("SetView(1)", function () { return mirt.SetView("a"); });
  line("MessageExists()", function () { return mirt.MessageExists(); });
  line("MessageExists(undefined)", function () { return mirt.MessageExists(undefined); });
  line("MessageExists(1)", function () { return mirt.MessageExists(1); });
  line("AddScript('a')", function () { return mirt.AddScript("a"); });
  line("NewMail", function () { return mirt.NewMail("a", 1); });
  line("NewMail(1)", function () { return mirt.NewMail("a"); });
  line("Output = number", function () { mirt.Output = 5; });
  line("Output = null", function () { mirt.Output = null; });
  line("Backable = object", function () { mirt.Backable = {}; });
  line("ProcessTemplateFile(1)", function () { text.ProcessTemplateFile("a"); });
  line("Stream = number", function () { text.Stream = 5; });
}
all();
mirt.AddMessage("m", "k");
line("MessageExists()", function () { return mirt.MessageExists(); });
line("MessageExists(undefined)", function () { return mirt.MessageExists(undefined); });
line("MessageExists('k')", function () { return mirt.MessageExists("k"); });
line("MessageExists('x')", function () { return mirt.MessageExists("x"); });
mirt.backable = 1;
line("backable = 1", function () { return mirt.BACKABLE; });
mirt.Backable = true;
line("Backable = true", function () { return mirt.backable; });
mirt.TEMPLATEFOLDER = "x";
line("templatefolder", function () { return mirt.templatefolder; });
line("tocommand", function () { return mirt.tocommand("a b&") + mirt.TOPARAMETER("n=", "\u00fc"); });
line("View outside", function () { return mirt.View; });
line("Include outside", function () { return mirt.Include; });
line("SetView outside", function () { return mirt.SetView("a", 1); });
line("PutIntoView outside", function () { return mirt.PutIntoView("a", false); });
line("PutIntoBag", function () { return mirt.PutIntoBag("a", false); });
line("PutIntoProp", function () { return mirt.PutIntoProp("nobody", false); });
line("Abandon", function () { return mirt.Abandon(); });
line("defaults", function () {
  var m = Server.CreateObject("Mirt");
  return [m.CommandName, m.TemplateCharset, m.Backable, m.NullIsEmpty, m.SubmitDecodeOnPutInto, m.CacheTemplate,
          m.SelfEncode, m.Name, m.Command, m.Template, m.DefaultTemplate, m.TemplatePermissionPath].join();
});
function OnTemplate_v(m) {
  m.View("a") = 1;
  m.View("b") = m.View("A") === m.View("a");
  m.SetView("c", "c");
  Response.Write(m.View("a") + "," + m.View("c") + "," + m.View.Count + "\n");
}
mirt.Template = "v";
mirt.Process();
// FireEvent says whether the function was found.
var fired = null;
function On_Test(m, argument) { fired = argument; return "answer"; }
Response.Write(mirt.FireEvent("On_Test", "arg", "") + "," + fired + "," + mirt.FireEvent("On_Nothing", 1, "") + "\n");
%>
