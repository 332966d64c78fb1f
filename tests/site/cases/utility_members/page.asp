<%
// The fifteen members, the same on the utility object and on the page controller.
function bytes(value) { return value && typeof value === "object" ? "<" + Array.from(value).join(" ") + ">" : JSON.stringify(value); }
var rows = [
  ["MakeKey(8, '0')", function (o) { return o.MakeKey(8, "0"); }],
  ["MakeKey 01", function (o) { return /^[01]{8}$/.test(o.makekey(8, "01")); }],
  ["MakeKey(0)", function (o) { return o.MakeKey(0, "ab"); }],
  ["MakeKey empty", function (o) { return o.MakeKey(5, ""); }],
  ["MakeKey negative", function (o) { return o.MakeKey(-1, "a"); }],
  ["MakeGUID(true)", function (o) { return /^[0-9A-Fa-f]{32}$/.test(o.MakeGUID(true)); }],
  ["MakeGUID(false)", function (o) { return /^\{[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}\}$/.test(o.MakeGUID(false)); }],
  ["Sleep", function (o) { return o.Sleep(1); }],
  ["MD5 empty", function (o) { return o.MD5("", 0); }],
  ["MD5 raw", function (o) { return o.MD5("a", -1) === o.MD5(new Uint8Array([97, 0, 0, 0]), 0); }],
  ["MD5 number", function (o) { return o.MD5(5, 0); }],
  ["SHA1", function (o) { return o.sha1("abc", 0); }],
  ["FindString", function (o) { return o.FindString("a", "a"); }],
  ["FindString case", function (o) { return o.FindString("a", "A"); }],
  ["FindString list", function (o) { return o.FindString(["x", "y", "z"], "z"); }],
  ["FindString none", function (o) { return o.FindString([], "z"); }],
  ["FindString number", function (o) { return o.FindString(["1"], 1); }],
  ["FindString object", function (o) { return o.FindString([Server.CreateObject("Mirt.Utility")], "1"); }],
  ["HanToZen", function (o) { return o.HanToZen("abc"); }],
  ["ZenToHan", function (o) { return o.ZenToHan(o.HanToZen("abc 1")); }],
  ["SubmitDecode", function (o) { return o.SubmitDecode("&#12354;&#x3042;") === "\u3042\u3042"; }],
  ["SubmitDecode stops", function (o) { return o.SubmitDecode("a&#;b"); }],
  ["SubmitDecode letters", function (o) { return o.SubmitDecode("x&#65abc;&#66"); }],
  ["SubmitDecode beyond", function (o) { return typeof o.SubmitDecode("&#x110000;&#99999999999;&#-1;"); }],
  ["Trim", function (o) { return o.Trim(" \t\r\n\u3000a b\f\u3000 "); }],
  ["Trim all", function (o) { return o.Trim(" \u3000 "); }],
  ["HTMLEncode", function (o) { return o.HTMLEncode("<>\"&'"); }],
  ["Base64Encode", function (o) { return o.Base64Encode("abc", 0); }],
  ["Base64Encode number", function (o) { return o.Base64Encode(5, 0); }],
  ["URLEncode", function (o) { return o.URLEncode("a b/\u00fc", 65001); }],
  ["URLEncode raw", function (o) { return o.URLEncode("A", -1); }],
  ["Base64Decode", function (o) { return o.Base64Decode("YW Jj", 0); }],
  ["Base64Decode bytes", function (o) { return bytes(o.Base64Decode("AAEC", -2)); }],
  ["Base64Decode empty", function (o) { return o.Base64Decode("", 0); }],
  ["URLDecode", function (o) { return o.URLDecode("%41%42", 0); }],
  ["URLDecode plus", function (o) { return o.URLDecode("a+b", 0); }],
  ["URLDecode cut", function (o) { return o.URLDecode("%4", 0); }],
  ["too few", function (o) { return o.URLDecode("%41"); }]
];
var utility = Server.CreateObject("Mirt.Utility");
var mirt = Server.CreateObject("Mirt");
function tell(f, o) { try { return String(f(o)); } catch (e) { return (e.number >>> 0).toString(16); } }
rows.forEach(function (row) {
  var one = tell(row[1], utility), other = tell(row[1], mirt);
  Response.Write(row[0] + ": " + one + (one === other ? "" : " but " + other) + "\n");
});
%>
