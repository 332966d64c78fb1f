<%
// Every drawer says which of them was given a wrong number of arguments.
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.Name = "app";
var names = ["InputDefault", "InputDefaultV", "InputDefaultP", "Input", "Input_Default", "InputV", "InputV_Default",
             "InputP", "InputP_Default", "Message"];
function tell(text) {
  try {
    mirt.ProcessTemplate(text);
    Response.Write(text + " drawn\n");
  } catch (e) {
    Response.Write(e.message + "|" + e.source + "|" + (e.number >>> 0).toString(16) + "\n");
  }
}
function OnTemplate_main(m) {
  names.forEach(function (name) { tell("(#%_" + name + "#)"); });
  tell("(#%_inputdefault|a#|#b#|#c#|#d#|#e#)");
  tell("(#%_Input|a#|#b#|#c#|#d#)");
  tell("(#%_Input_Default|a#)");
  tell("(#%_Input_Default|a#|#b#|#c#)");
  tell("(#%_InputP|a#)");
  tell("(#%_Message|a#|#b#|#c#|#d#)");
  m.AddMessage(3, "n");
  tell("(#%_Message|n#|#(#%_Message_Text|one#|#two#)#)");
  tell("(#%_Nothing#)");
  tell("(#%nothing#)");
}
mirt.Template = "main";
mirt.Process();
%>
