<%
// Drawers inside drawers: each sees what is its own, and what was around it afterwards.
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.Name = "app";
var colour = "green";
function draw(text) {
  try {
    mirt.ProcessTemplate(text);
    Response.Write("\n");
  } catch (e) {
    Response.Write(e.message + "|" + e.source + "|" + (e.number >>> 0).toString(16) + "\n");
  }
}
function show(m) { return m.View.Exists("_Input_Name") + "," + m.View.Exists("_Input_Value"); }
function again(m) {
  m.AddMessage("later", "list");
  return "";
}
function OnTemplate_main(m) {
  m.Bag("a") = "1";
  m.Bag("b") = ["2", "3"];
  m.Bag("nothing") = null;
  m.SetView("v", "4");
  draw("(#%_Input|a#|#(#/_Input_Name#)=(#/_Input_Value#) (#%_Input|b#|#(#/_Input_Name#)=(#/_Input_Value|1#)#) (#/_Input_Name#)=(#/_Input_Value#)#) (#:show#)");
  draw("(#%_Input|a#|#(#%_InputV|v#|#(#/_Input_Name#)(#/_InputV_Name#)(#%_InputV_Default|no#|#yes#)#)#)");
  draw("(#%_Input|a#|#some#|#none#)(#%_Input|missing#|#some#|#none#)(#%_InputV|missing#|#some#|#none#)(#%_InputP|missing#|#some#|#none#)");
  draw("(#%_Input|a#|#(#:missing#)#)");
  draw("(#:show#)");
  m.SetView("_Input_Name", "mine");
  draw("(#%_Input|a#|#(#/_Input_Name#)#)(#/_Input_Name#)");
  draw("(#%_InputDefault|nothing#|#x#|#yes#|#no#)");
  draw("(#%_InputDefaultP|missing#|#x#|#yes#|#no#)");
  draw("(#%_InputDefault|missing#|##|#yes#|#no#)" + m.Bag.Exists("missing"));
  m.AddMessage("one", "list");
  m.AddMessage(2, "list");
  m.AddMessage("sub", "inner");
  draw("(#%_Message|list#|#[(#%_Message_Text|first#|#second#)(#%_Message|inner#|#<(#%_Message_Text#)>#)(#%_Message_Text|first#|#second#)]#)");
  draw("(#%_Message|list#|#(#:again#)(#%_Message_Text|first#|#second#)#)");
  draw("(#%_Message|list#|#(#%_Message_Text|first#|#second#)#)");
  draw("(#%_Message_Text#)");
  m.AddMessage(null, "null");
  draw("(#%_Message|null#|#(#%_Message_Text|first#)#)");
  m.AddMessage("2", "text");
  draw("(#%_Message|text#|#(#%_Message_Text|first#|#second#)#)");
}
mirt.Template = "main";
mirt.Process();
draw("(#%_Input|a#|#x#)");
draw("(#%_InputDefaultV|a#|#x#|#y#|#z#)");
%>
