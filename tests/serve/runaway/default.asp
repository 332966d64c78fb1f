<%@ Language="JavaScript" %>
<%
// Fails in the way that is asked for.
function controller() {
  var mirt = Server.CreateObject("Mirt");
  mirt.Script = this;
  return mirt;
}
function OnDraw_thrown() { throw new TypeError("thrown in a callback"); }
function OnDraw_again(mirt) { mirt.ProcessTemplate("(#%again#)"); }
var ways = {
  callback: function () { controller().ProcessTemplate("(#%thrown#)"); },
  keep_in_session: function () { Session("kept") = { value: 1 }; },
  keep_in_application: function () { Application("kept") = function () {}; },
  keep_hidden: function () {
    var dictionary = Server.CreateObject("Scripting.Dictionary");
    dictionary.Add("function", function () { return 1; });
    Session("hidden") = dictionary;
  },
  use_hidden: function () { Session("hidden")("function")(); },
  recurse: function () { ways.recurse(); },
  recurse_through_component: function () { controller().ProcessTemplate("(#%again#)"); },
  grow: function () { for (var all = [];;) all.push([all.length]); },
  grow_text: function () { for (var text = "text";;) text += text; },
  grow_dictionary: function () {
    for (var n = 0, all = Server.CreateObject("Scripting.Dictionary"), text = "text".repeat(1e4);; n++) all.Add(n, text);
  },
  grow_component: function () {
    for (var templator = Server.CreateObject("Mirt.TextTemplator"), text = "text".repeat(1e4);;) templator.Write(text);
  }
};
var way = String(Request.QueryString("way"));
if (way in ways) ways[way]();
%>served
