<%@ EnableSessionState="False" %><table>
<% for (var row = 1; row <= 200; row++) { %>
<tr><td><%= row %></td><td><%= Server.HTMLEncode("<row " + row + ">") %></td></tr>
<% } %>
</table>
