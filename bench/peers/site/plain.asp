<%@ Language="JavaScript" CodePage="65001" %><% var count = 100; %><!DOCTYPE html>
<html><head><title>Entries</title></head><body><h1>Entries</h1><table>
<% for (var i = 1; i <= count; i++) {
  var name = "Entry <" + i + "> of the list";
  var words = "What was said & done about entry " + i + ", in about as many words as a line of a list or a table has";
%><tr><td><%= i %></td><td><%= Server.HTMLEncode(name) %></td>
<td><%= Server.HTMLEncode(words) %></td><td><%= i * 37 %></td></tr>
<% } %></table></body></html>
