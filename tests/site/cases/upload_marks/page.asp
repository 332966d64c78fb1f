<%
// Fields of an upload drawn by marks: encoded and raw, by position, and through the members of a file.
var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);
function OnCommand_Save() {}
function draw(text) {
  try { mirt.ProcessTemplate(text); } catch (error) { Response.Write(error.message); }
  Response.Write("\n");
}
function OnTemplate_() {
  draw("(#$caption#)|(#\\caption#)");
  draw("(#$tags#)|(#\\tags#)");
  draw("(#$tags|1#)|(#$tags|2#)");
  draw("(#\\photo|1#|#FileName2#) (#\\photo|1#|#FileName#) (#\\photo|1#|#Stream#|#Size#)");
  draw("(#$photo#)");
  draw("(#$none#)");
  draw("(#$REQUEST_METHOD#)");
}
mirt.Process();
%>
