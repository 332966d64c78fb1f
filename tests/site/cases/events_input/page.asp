<%
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.Name = "app";
var colour = "green";
var several = ["1", "3"];
var number = 5;
function draw(text) {
  mirt.ProcessTemplate(text);
  Response.Write("\n");
}
function OnDraw__InputDefaultV(m, a) { m.Write("own " + a.join("+"), false); }
function OnTemplate_main(m) {
  m.Bag("colour") = "red";
  m.Bag("list") = ["a", "b"];
  m.SetView("size", "L");
  // Four arguments: name, value, text of a match, text otherwise.
  draw("(#%_InputDefault|colour#|#red#|#yes#|#no#)(#%_InputDefault|colour#|#Red#|#yes#|#no#)");
  draw("(#%_InputDefault|list#|#b#|#yes#|#no#)(#%_InputDefault|list#|#c#|#yes#|#no#)");
  draw("(#%_InputDefaultP|colour#|#green#|#yes#|#no#)(#%_InputDefaultP|several#|#3#|#yes#|#no#)(#%_InputDefaultP|number#|#5#|#yes#|#no#)");
  // A script function comes before the drawer of its name.
  draw("(#%_InputDefaultV|size#|#L#|#yes#|#no#)");
  // The two arguments of _Default: text otherwise, text of a match.
  draw("(#%_InputV|size#|#[(#*_InputV_Name#)=(#*_InputV_Value#)(#%_InputV_Default|no#|#yes#)]#)");
  draw("(#%_InputP|colour#|#[(#*_InputP_Name#)=(#*_InputP_Value#)(#%_InputP_Default|no#|#yes#)]#)");
  draw("(#%_Input|colour#|#[(#*_Input_Name#)=(#*_Input_Value#)(#%_Input_Default|no#|#yes#)]#)");
  // The chosen text is a template.
  draw("(#%_InputDefault|colour#|#red#|#<(#;colour#)>#|#no#)");
  // Messages: of a key, of none, and what is drawn without any.
  draw("(#%_Message|k#|#x#|#none#)|(#%_Message|k#|#x#)|(#%_Message|x#)");
  m.AddMessage("first <(#;colour#)>", "k");
  m.AddMessage(2, "k");
  m.AddMessage("bare", "");
  draw("(#%_Message|k#|#{(#%_Message_Text|one#|#two#)}#|#none#)");
  draw("(#%_Message|{(#%_Message_Text#)}#)");
}
mirt.Template = "main";
mirt.Process();
%>
