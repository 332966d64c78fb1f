<%
// The number, source and words of a failure reach whoever catches it outside, and the first error is its cause.
var page = Server.CreateObject("Mirt");
page.Script = this;
var text = Server.CreateObject("Mirt.TextTemplator");
text.Script = this;

function caught(name, run) {
  try {
    run();
    Response.Write(name + ": no error\n");
  } catch (e) {
    var same = e.cause && e.cause.number === e.number && e.cause.message === e.message && e.cause.source === e.source;
    Response.Write(name + ": 0x" + (e.number >>> 0).toString(16) + ", " + e.source + ", " + e.message +
                   (e.cause ? same ? " = cause" : " < " + e.cause.message : "") + "\n");
  }
}
function unknown() { page.NoSuch = 1; }
function refused() { page.NewMail("x", 1); }
function mine() { throw new RangeError("mine"); }
function numbered() { var e = new Error("numbered"); e.number = -2147352567; e.source = "Here"; throw e; }
function lookalike() { var e = new Error("lookalike"); e.number = -2147352573; throw e; }
var reads = 0;
var holder = { get value() { ++reads; return lookalike(); } };

var failures = { unknown: unknown, refused: refused, mine: mine, numbered: numbered, lookalike: lookalike };
for (var name in failures) {
  var On_StartProcess = failures[name];
  caught(name + " in an event", function () { page.Process(); });
  caught(name + " in a mark", function () { page.ProcessTemplate("(#:" + name + "#)"); });
  caught(name + " alone", function () { text.ProcessTemplate("(#" + name + "#)"); });
  caught(name + " fired", function () { page.FireEvent(name, 1, 2); });
}
caught("getter", function () { page.ProcessTemplate("(#:holder|value#)"); });
Response.Write("read " + reads + " time\n");
// A failure of the component's own has words of its own; nothing that the page caught before is its cause.
caught("no such mark", function () { page.ProcessTemplate("(#:nowhere#)"); });
caught("a failure of its own", function () { page.ProcessTemplate("(#%nowhere#)"); });
%>
