<%
// What an upload's form and lists answer, and what they do not offer.
var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);
function tell(f) {
  try { Response.Write(String(f()) + "\n"); } catch (e) { Response.Write((e.number >>> 0).toString(16) + "\n"); }
}
function On_StartProcess() {
  var form = mirt.Request, tags = form("tags");
  tell(function () { return form.Count; });
  tell(function () { return form.Key(1); });
  tell(function () { return new Enumerator(form).item(); });
  tell(function () { return new Enumerator(tags).item(); });
  tell(function () { return form.Item("tags"); });
  tell(function () { return form("TAGS"); });
  tell(function () { return form(1); });
  tell(function () { return form(null); });
  tell(function () { return tags.Item(undefined); });
  tell(function () { return tags.Item("2"); });
  tell(function () { return tags(0); });
  tell(function () { return tags(3); });
  tell(function () { return tags("x"); });
  tell(function () { return form("photo").Item(undefined).FileName2; });
  tell(function () { return form("photo").Item(1).NoMember; });
}
function OnCommand_Save() {}
function On_StartDraw() { return false; }
mirt.Process();
%>
