<%@ Language="VBScript" CodePage="65001" %><% Dim count, i, name, words : count = 100 %><!DOCTYPE html>
<html><head><title>Entries</title></head><body><h1>Entries</h1><table>
<% For i = 1 To count
  name = "Entry <" & i & "> of the list"
  words = "What was said & done about entry " & i & ", in about as many words as a line of a list or a table has"
%><tr><td><%= i %></td><td><%= Server.HTMLEncode(name) %></td>
<td><%= Server.HTMLEncode(words) %></td><td><%= i * 37 %></td></tr>
<% Next %></table></body></html>
