<%@ EnableSessionState="False" %><%
// Takes memory, of the kind that is named, until there is none.
var kept = [];
var dictionary = Server.CreateObject("Scripting.Dictionary");
var stream = Server.CreateObject("ADODB.Stream");
stream.Type = 2;
stream.Open();
var piece = "0123456789".repeat(10000);
var kinds = {
  objects: function (i) { kept.push(new Array(10000).fill({ i: i })); },
  text: function (i) { kept.push((piece + i).split("")); },
  dictionary: function (i) { dictionary.Add(i, piece + i); },
  stream: function () { stream.WriteText(piece); }
};
var take = kinds[String(Request.QueryString("kind"))];
for (var i = 0;; i++) take(i);
%>
