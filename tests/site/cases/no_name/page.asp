<%
// Without a Name there is no bag and no command key, and the messages say so.
function tell(f) { try { Response.Write(f() + "\n"); } catch (e) { Response.Write(e.message + "|" + e.source + "\n"); } }
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
tell(function () { return mirt.Bag; });
tell(function () { return mirt.PutIntoBag("a", false); });
tell(function () { return mirt.ProcessTemplate("(#&a#)"); });
tell(function () { return mirt.ToCommand("Save"); });
mirt.Backable = false;
tell(function () { return mirt.ToCommand("Save"); });
tell(function () { return mirt.ProcessTemplate("(#!#)"); });
tell(function () { return mirt.Process(); });
mirt.Command = "Go";
function OnCommand_Go() { }
tell(function () { return mirt.Process(); });
// With one the key is six letters and the number of commands so far.
mirt.Name = "keyed";
mirt.Process();
tell(function () { return /^\?[A-Z]{6}1=Save&$/.test(mirt.ToCommand("Save")); });
mirt.Process();
tell(function () { return /^\?[A-Z]{6}2=Save&$/.test(mirt.ToCommand("Save")); });
tell(function () { return mirt.Bag.Count; });
%>
