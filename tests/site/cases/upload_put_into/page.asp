<%
// Fields of an upload bound by name. All at once fails: an upload has no keys.
var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);
mirt.Name = "app";
var caption, tags, photo;
function tell(f) { try { Response.Write(f() + "\n"); } catch (e) { Response.Write((e.number >>> 0).toString(16) + "\n"); } }
function kind(value) { return Array.isArray(value) ? "[" + value.join(";") + "]" : typeof value === "string" ? "'" + value + "'" : value.Count + " " + value; }
function OnCommand_Save() {
  tell(function () { mirt.PutIntoBag("tags", false); return kind(mirt.Bag("tags")); });
  tell(function () { mirt.PutIntoBag("tags", true); return kind(mirt.Bag("tags")); });
  tell(function () { mirt.PutIntoProp("photo", true); return photo.length + " " + photo[0].FileName2; });
  tell(function () { mirt.PutIntoProp("photo", false); return photo.Count + " " + photo.Item(1).FileName2; });
  mirt.SubmitDecodeOnPutInto = true;
  tell(function () { mirt.PutIntoView("caption", false); return kind(mirt.View("caption")); });
  tell(function () { mirt.PutIntoView("tags", false); return kind(mirt.View("tags")); });
  tell(function () { mirt.PutIntoProp("tags", true); return kind(tags); });
  tell(function () { mirt.PutIntoView("none", false); return kind(mirt.View("none")); });
  tell(function () { mirt.PutIntoView("none", true); return kind(mirt.View("none")); });
  // A file has no text.
  tell(function () { mirt.PutIntoView("photo", false); return "put"; });
  tell(function () { mirt.PutIntoView("photo", true); return "put"; });
  tell(function () { mirt.PutIntoView("c", false); return kind(mirt.View("c")); });
  mirt.View.RemoveAll();
  tell(function () { mirt.PutIntoView("", false); return "put"; });
  tell(function () { return mirt.View.Count; });
}
function OnTemplate_() {}
mirt.Process();
%>
