<%@ EnableSessionState="False" %>
<%
// Makes garbage of every kind, so that the engine collects it while the page runs.
var kept = [];
for (var i = 0; i < 5000; i++) {
  kept[i % 100] = { text: "row " + i, list: [i, i + 1], call: function () { return this.list[0]; } };
  if (i % 500 == 0) kept[0].dictionary = Server.CreateObject("Scripting.Dictionary");
}
var sum = 0;
for (var j = 0; j < kept.length; j++) sum += kept[j].call();
%><%= sum %>
