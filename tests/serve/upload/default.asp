<%@ Language="JavaScript" CodePage="65001" EnableSessionState="False" %>
<%
// Says what of an upload has arrived, as JSON: { total, error } or { total, fields: [{ name, values }] } with
// the fields that ?names= lists; all three where a body is malformed. A file's value is [name, last part of it, type, size, SHA-1].
var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);

function told(value) {
  if (typeof value === "string") return value;
  var bytes = value.Stream.Read();
  value.Stream.Position = 0;
  return [value.FileName, value.FileName2, value.ContentType, value.Stream.Size,
    mirt.SHA1(bytes === null ? new Uint8Array(0) : bytes, 0)];
}

var answer = { total: Request.TotalBytes };
function tell() {
  answer.count = mirt.Request.Count;
  answer.fields = String(Request.QueryString("names")).split(",").map(function (name) {
    var list = mirt.Request(name);
    return { name: name, values: list ? mirt.ToArray(list).map(told) : [] };
  });
}
function On_StartProcess() { tell(); }
function On_StartDraw() { return false; }
try {
  mirt.Process();
} catch (error) {
  answer.error = error.message;
  if (!/^Upload/.test(answer.error)) tell();  // a malformed body leaves what stood before the fault
}
Response.ContentType = "application/json";
Response.Write(JSON.stringify(answer));
%>
