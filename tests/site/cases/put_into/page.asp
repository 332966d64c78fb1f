<%
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.Name = "app";
var n, enc = "before";
function tell(f) { try { Response.Write(f() + "\n"); } catch (e) { Response.Write((e.number >>> 0).toString(16) + "\n"); } }
function kind(value) { return Array.isArray(value) ? "[" + value.join(";") + "]" : typeof value === "string" ? "'" + value + "'" : String(value); }
function OnCommand_Save(m) {
  tell(function () { m.PutIntoBag("n", true); return kind(m.Bag("n")); });
  tell(function () { m.PutIntoBag("n", false); return m.Bag("n") + "," + m.Bag("n").Count; });
  m.SubmitDecodeOnPutInto = true;
  tell(function () { m.PutIntoBag("n", false); return kind(m.Bag("n")); });
  tell(function () { m.PutIntoView("enc", true); return kind(m.View("enc")); });
  tell(function () { m.PutIntoView("enc", false); return kind(m.View("enc")); });
  tell(function () { m.PutIntoProp("enc", false); return enc; });
  tell(function () { m.PutIntoProp("n", true); return kind(n); });
  tell(function () { m.PutIntoProp("other", false); return "put"; });
  m.View.RemoveAll();
  tell(function () { m.PutIntoView("", true); return m.View.Count + "," + m.View.Exists("c") + "," + kind(m.View("n")); });
  tell(function () { m.PutIntoView("c", false); return kind(m.View("c")); });
  // Stops at the first field that no variable has.
  n = enc = "kept";
  tell(function () { m.PutIntoProp("", false); return "put"; });
  tell(function () { return kind(n) + kind(enc); });
  tell(function () { return m.ToArray(Request.QueryString("n")).length; });
  tell(function () { return m.ToArray(m.Request("none")).length; });
}
mirt.Process();
%>
