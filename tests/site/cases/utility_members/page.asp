<%
// The calls that every road to the utility members must answer alike (tests/data/utility), through the
// script bridge on the full host, on both objects that carry the members.
var objects = { utility: Server.CreateObject("Mirt.Utility"), controller: Server.CreateObject("Mirt") };

function stream(file, type) {
  var s = Server.CreateObject("ADODB.Stream");
  s.Type = type;
  if (type === 2) s.Charset = "utf-8";
  s.Open();
  s.LoadFromFile(Server.MapPath(file));
  return s;
}

function argument(value) {
  if (Array.isArray(value)) return value.map(argument);
  return value && value.bytes ? new Uint8Array(value.bytes) : value;
}

function shown(f) {
  try {
    var value = f();
    if (value === undefined) return null;
    return value instanceof Uint8Array ? { bytes: Array.from(value) } : value;
  } catch (e) {
    if (!(e instanceof Error) || typeof e.number !== "number") return String(e);
    return { code: (e.number >>> 0).toString(16) };
  }
}

function agrees(given, expected) {
  if (expected && expected.like) return typeof given === "string" && new RegExp(expected.like).test(given);
  return JSON.stringify(given) === JSON.stringify(expected);
}

var members = {};
JSON.parse(stream("members.json", 2).ReadText()).forEach(function (row) {
  if (row.host === "bare") return;
  Object.keys(objects).forEach(function (name) {
    var given = shown(function () { return objects[name][row.call](...row["with"].map(argument)); });
    members[row.call] = members[row.call] || "agrees";
    if (agrees(given, row.gives)) return;
    members[row.call] += "\n  on the " + name + " " + JSON.stringify(row) + " gave " + JSON.stringify(given);
  });
});
Object.keys(members).forEach(function (name) { Response.Write(name + " " + members[name] + "\n"); });

// What only a page has: bytes in each of its forms, and the ways to call a member wrongly.
var calls = {
  "ArrayBuffer": function (o) { return o.MD5(new Uint8Array([97, 98, 99]).buffer, 0); },
  "part of a buffer": function (o) { return o.MD5(new Uint8Array(new Uint8Array([120, 97, 98, 99, 120]).buffer, 1, 3), 0); },
  "stream": function (o) { return o.SHA1(stream("abc.bin", 1).Read(), 0); },
  "stream, encoded": function (o) { return o.Base64Encode(stream("abc.bin", 1).Read(), 0) + o.URLEncode(stream("abc.bin", 1).Read(2), 0); },
  "decoded, hashed": function (o) { return o.MD5(o.Base64Decode("YWJj", -2), 0); },
  "decoded": function (o) { return o.Base64Decode("YWJj", -2) instanceof Uint8Array; },
  "any letter case": function (o) { return o.sha1("abc", 0) === o.SHA1("abc", 0) && o.TRIM(" a ") === "a"; },
  "object in a list": function (o) { return o.FindString([Server.CreateObject("Mirt.Utility")], "1"); },
  "text from a number": function (o) { return o.Trim(12.5) + o.URLDecode(41, 0); },
  "beyond characters": function (o) { return o.SubmitDecode("&#x110000;&#99999999999;&#-1;").length; },
  "no charset": function (o) { return o.MD5("abc"); },
  "no argument": function (o) { return o.Trim(); },
  "one too many": function (o) { return o.Trim(" a ", 1); },
  "no such member": function (o) { return o.MD6("abc", 0); }
};
Object.keys(calls).forEach(function (call) {
  var one = JSON.stringify(shown(function () { return calls[call](objects.utility); }));
  var other = JSON.stringify(shown(function () { return calls[call](objects.controller); }));
  Response.Write(call + ": " + one + (one === other ? "" : " but " + other) + "\n");
});
%>
