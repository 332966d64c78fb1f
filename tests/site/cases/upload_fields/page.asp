<%
// Multipart fields by every way that a page has to them.
var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);
mirt.SubmitDecodeOnPutInto = false;
function OnDraw_None() {}
function On_StartProcess() {
  var photo = mirt.Request("photo");
  Response.Write(mirt.Request.Count + "|" + photo.Count + "|" + photo.Item(1).FileName2 + "|" + photo(2).FileName2 + "|");
  Response.Write(mirt.Request("photo").Item(1).ContentType + "|" + mirt.Request("tags") + "|" + mirt.ToArray(mirt.Request("tags")).join("+") + "|");
  try { photo.Item(3); } catch (e) { Response.Write((e.number >>> 0).toString(16) + "|"); }
  Response.Write((mirt.Request("none") === undefined) + "|");
  mirt.PutIntoView("tags", true);
  Response.Write(mirt.View("tags").join("/") + "|");
  mirt.SetView("x", "set");
  Response.Write(mirt.View("x") + "|");
  Response.Write(mirt.MD5(photo.Item(1).Stream.Read(), 0) + "|" + mirt.Base64Encode(new Uint8Array([1, 2, 255]), 0) + "|" +
    mirt.SHA1(new Uint8Array([97, 98, 99]).buffer, 0) + "|" + (mirt.Base64Decode("AQL/", -2) instanceof Uint8Array));
}
function On_StartDraw() { return false; }
mirt.Process();
%>
