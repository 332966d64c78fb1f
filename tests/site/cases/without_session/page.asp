<%@ Language="JavaScript" EnableSessionState="False" %><%
// A page without a session keeps nothing, whatever its Name, and says so where it is asked to.
var mirt = Server.CreateObject("Mirt");
function tell(what, f) {
  try { Response.Write(what + ": " + f() + "\n"); } catch (e) { Response.Write(what + ": " + e.message + "|" + e.source + "|" + (e.number >>> 0).toString(16) + "\n"); }
}
mirt.Script = this;
mirt.Name = "app";
function On_FirstAccess() { Response.Write("first\n"); }
function On_LastAccess() { Response.Write("last\n"); }
tell("process", function () { return mirt.Process(); });
tell("bag", function () { return mirt.Bag; });
tell("bag mark", function () { return mirt.ProcessTemplate("(#&x#)"); });
tell("bind", function () { return mirt.PutIntoBag("x", false); });
tell("session mark", function () { return mirt.ProcessTemplate("(#=x#)"); });
tell("raw session mark", function () { return mirt.ProcessTemplate("(#~x#)"); });
tell("abandon", function () { return mirt.Abandon(); });
mirt.Backable = false;
tell("key", function () { return mirt.ToCommand("x"); });
tell("key mark", function () { return mirt.ProcessTemplate("(#?#)"); });
%>
