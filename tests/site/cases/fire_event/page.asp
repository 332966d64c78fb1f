<%
// FireEvent from a page. The function's answer goes into the third argument by reference, which JavaScript has
// not: a page sees whether the function was found, and what the function does.
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
function tell(what, f) {
  try { Response.Write(what + ": " + f() + "\n"); }
  catch (e) { Response.Write(what + ": " + e.message + " | " + (e.number >>> 0).toString(16) + "\n"); }
}
var seen;
function On_Seen(m, argument) { seen = argument; return "answer"; }
function On_Page(m) { return m.Title === undefined && m.DefaultTemplate === "same"; }
function On_Thrown() { throw new Error("thrown"); }
function On_Add(m, list) { list.push("more"); }
var On_Value = 5;
mirt.DefaultTemplate = "same";
tell("found", function () { return mirt.FireEvent("On_Seen", "text", "") + " " + seen; });
[1, true, null, undefined, [1, 2], { a: 1 }].forEach(function (value) {
  tell(JSON.stringify(value), function () { mirt.FireEvent("On_Seen", value, ""); return JSON.stringify(seen); });
});
tell("any letter case", function () { return mirt.fireevent("On_Seen", 7, "") + " " + seen; });
tell("missing", function () { seen = "untouched"; return mirt.FireEvent("On_Nothing", 1, "") + " " + seen; });
tell("empty", function () { return mirt.FireEvent("", 1, ""); });
tell("thrown", function () { return mirt.FireEvent("On_Thrown", 1, ""); });
tell("no function", function () { return mirt.FireEvent("On_Value", 1, ""); });
tell("an object is the same one", function () { var list = {}; list.push = function (x) { this.x = x; }; mirt.FireEvent("On_Add", list, ""); return list.x; });
tell("no room for the answer", function () { return mirt.FireEvent("On_Seen", 1); });
var answer = "before";
tell("the answer stays with the caller", function () { return mirt.FireEvent("On_Seen", 1, answer) + " " + answer; });
// The script that was added last is asked first.
mirt.AddScript({ On_Seen: function (m, argument) { seen = "later " + argument; } });
tell("last added", function () { return mirt.FireEvent("On_Seen", 1, "") + " " + seen; });
%>
