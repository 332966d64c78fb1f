<%
// Templates that nobody writes: each is drawn or refused with a clear error.
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.Name = "app";
var v = "v";
var written = 0;
var sink = Server.CreateObject("ADODB.Stream");
sink.Open();
function tell(what, f) {
  try { Response.Write(what + ": " + f() + "\n"); } catch (e) { Response.Write(what + ": " + e.message.replace(/\(#{20,}[^]*#\)/, "…").replace(/(\(#){20,}[^]*/, "…") + "|" + (e.number >>> 0).toString(16) + "\n"); }
}
function repeat(text, n) { return new Array(n + 1).join(text); }
function drawn(text) {
  sink.Position = 0;
  sink.SetEOS();
  mirt.Output = sink;
  try {
    mirt.ProcessTemplate(text);
  } finally {
    mirt.Output = Response;
  }
  sink.Position = 0;
  return sink.ReadText();
}
// As a name the inner marks are text.
tell("nested in a name", function () { return drawn("(#;" + repeat("(#", 10000) + repeat("#)", 10000) + "#)"); });
tell("nested and open", function () { return drawn(repeat("(#", 10000)); });
// As an argument they are drawn one inside the other.
tell("nested drawers", function () {
  return drawn(repeat("(#%_InputDefaultP|v#|#v#|#", 20) + "x" + repeat("#|#no#)", 20));
});
tell("nested too deep", function () {
  return drawn(repeat("(#%_InputDefaultP|v#|#v#|#", 10000) + "x" + repeat("#|#no#)", 10000));
});
tell("100,000 marks", function () { return drawn(repeat("(#;v#)", 100000)).length; });
tell("unpaired", function () { return drawn("(#;v\uD800#)").length; });
tell("zero", function () { return drawn("a\0b(#;v#)").length; });
tell("zero in a name", function () { return drawn("(#;v\0w#)"); });
tell("special", function () { return drawn("(#;<>&\"'%^^ \t\r\n\u00fc\u{1F600}#)"); });
tell("afterwards", function () { return drawn("(#;v#)"); });
%>
