<%
// A mark's failure names it; what the handler said itself stays as it is.
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
var list = ["a"], nil = null, number = 3;
function tell(text) {
  try { mirt.ProcessTemplate(text); Response.Write(text + " drawn\n"); } catch (e) {
    Response.Write("\n" + e.message + "|" + e.source + "|" + (e.number >>> 0).toString(16) + "\n");
  }
}
function fails() { throw new Error("own words"); }
tell("(#;none#)");
tell("(#:none|p#)");
tell("(#;list|7#)");
tell("(#;list|x#)");
tell("(#;number|x#)");
tell("(#;nil#)");
mirt.NullIsEmpty = true;
tell("(#;nil#)");
tell("(#*x#)");
tell("(#@x#)");
tell("(#&x#)");
tell("a(#%x");
tell("a#)b");
tell("(#;fails#)");
// A variable that cannot be read is not taken for a function; a function cannot be bound to an input.
mirt.AddScript({ get hidden() { throw new Error("not to be read"); } });
tell("(#;hidden#)");
tell("(#%_InputDefaultP|fails#|#x#|#yes#|#no#)");
// What a function changes counts for its own answer.
mirt.NullIsEmpty = false;
function turnsOn(m) { m.NullIsEmpty = true; return null; }
tell("(#;turnsOn#)");
%>
