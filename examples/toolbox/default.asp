<%@ Language="JavaScript" CodePage="65001" EnableSessionState="False" %>
<%
// Every conversion that the utility members offer, applied to one text. A conversion is a row: what it
// is called, the call as a script writes it, and what came of it.

var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);
mirt.TemplateFolder = Server.MapPath("templates");
mirt.TemplateExt = ".html";
mirt.DefaultTemplate = "page";
mirt.NullIsEmpty = true;

var UTF8 = 65001;
var text = "";
var limit = 10000;

function bytesAsHex(bytes) {
  return Array.from(bytes, function (b) { return (b < 16 ? "0" : "") + b.toString(16); }).join(" ");
}

// The bytes of a text, as a Uint8Array.
function utf8(text) {
  return mirt.Base64Decode(mirt.Base64Encode(text, UTF8), -2);
}

var groups = [
  ["Encoders", [
    ["HTML", "mirt.HTMLEncode(text)", function () { return mirt.HTMLEncode(text); }],
    ["Percent-encoding", "mirt.URLEncode(text, 65001)", function () { return mirt.URLEncode(text, UTF8); }],
    ["Base64 of the UTF-8 bytes", "mirt.Base64Encode(text, 65001)", function () { return mirt.Base64Encode(text, UTF8); }],
    ["Base64 of the characters in memory", "mirt.Base64Encode(text, -1)", function () { return mirt.Base64Encode(text, -1); }]
  ]],
  ["Decoders", [
    ["Character references", "mirt.SubmitDecode(text)", function () { return mirt.SubmitDecode(text); }],
    ["Percent-encoding", "mirt.URLDecode(text, 65001)", function () { return mirt.URLDecode(text, UTF8); }],
    ["Base64 to text", "mirt.Base64Decode(text, 65001)", function () { return mirt.Base64Decode(text, UTF8); }],
    ["Base64 to bytes", "mirt.Base64Decode(text, -2)", function () { return bytesAsHex(mirt.Base64Decode(text, -2)); }],
    ["Without blanks at either end", "mirt.Trim(text)", function () { return mirt.Trim(text); }]
  ]],
  ["Digests", [
    ["MD5", "mirt.MD5(text, 65001)", function () { return mirt.MD5(text, UTF8); }],
    ["SHA-1", "mirt.SHA1(text, 65001)", function () { return mirt.SHA1(text, UTF8); }],
    ["SHA-1 of bytes", "mirt.SHA1(utf8(text))", function () { return mirt.SHA1(utf8(text), UTF8); }]
  ]],
  ["Width", [
    ["Full width", "mirt.HanToZen(text)", function () { return mirt.HanToZen(text); }],
    ["Half width", "mirt.ZenToHan(text)", function () { return mirt.ZenToHan(text); }]
  ]],
  ["Keys", [
    ["A key of its characters", "mirt.MakeKey(16, text)", function () { return mirt.MakeKey(16, text); }],
    ["A GUID", "mirt.MakeGUID(false)", function () { return mirt.MakeGUID(false); }],
    ["A bare GUID", "mirt.MakeGUID(true)", function () { return mirt.MakeGUID(true); }],
    ["Is it one of yes, no, maybe?", "mirt.FindString([\"yes\", \"no\", \"maybe\"], text)",
      function () { return mirt.FindString(["yes", "no", "maybe"], text) ? "yes" : "no"; }]
  ]]
];

function On_StartProcess() {
  text = String(Request.QueryString("text").Count ? Request.QueryString("text") : "Fünf < 6 & ｶﾞｷﾞ か゛ \"ok\"");
  if (text.length > limit) text = text.slice(0, limit);
}

// Draws each group of conversions, each row through a child templator that reads the row from View.
function OnDraw_Conversions() {
  var row = mirt.NewTemplator("");
  row.Stream = Response;
  groups.forEach(function (group) {
    mirt.SetView("group", group[0]);
    row.ProcessTemplateFile(Server.MapPath("templates/group.html"), "UTF-8");
    group[1].forEach(function (conversion) {
      var result, state = "ok";
      try {
        result = conversion[2]() || "";
      } catch (error) {
        result = "not possible for this text (0x" + ((error.number >>> 0).toString(16).toUpperCase()) + ")";
        state = "failed";
      }
      mirt.SetView("name", conversion[0]);
      mirt.SetView("call", conversion[1]);
      mirt.SetView("result", result);
      mirt.SetView("state", state);
      row.ProcessTemplateFile(Server.MapPath("templates/row.html"), "UTF-8");
    });
  });
}

try {
  mirt.Process();
} catch (error) {
  // Anybody can type a command, and this page has none.
  if (!/^Unknown Command /.test(error.message)) throw error;
  Response.Clear();
  Response.Status = "404 Not Found";
  Response.Write("There is no such page.");
}
%>
