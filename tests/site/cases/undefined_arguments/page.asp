<%
// `undefined` is an omitted argument where one may be left out, and the empty value where one must be given.
var page = Server.CreateObject("Mirt");
page.Script = this;
var none = Session("none");
function told(name, value) { Response.Write(name + ": [" + value + "]\n"); }
told("HTMLEncode", Server.HTMLEncode(none));
told("URLEncode", Server.URLEncode(Session("none")));
told("Trim", page.Trim(page.Request("none")));
told("Trim of undefined", page.Trim(undefined));
told("ToParameter", page.ToParameter(none, none));
told("MessageExists", page.MessageExists(undefined));
page.AddMessage("m", none);
told("MessageExists", page.MessageExists(undefined) + " " + page.MessageExists(""));
var dictionary = Server.CreateObject("Scripting.Dictionary");
dictionary.Add("k", none);
dictionary("l") = none;
told("dictionary", typeof dictionary("k") + " " + dictionary("l"));
function On_StartProcess() { page.SetView("v", none); told("view", page.View("v")); return false; }
page.Process();
var stream = Server.CreateObject("ADODB.Stream");
stream.Open(undefined);
stream.WriteText("all of it");
stream.Position = 0;
told("ReadText", stream.ReadText(undefined));
%>
