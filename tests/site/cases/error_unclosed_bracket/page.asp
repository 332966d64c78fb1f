<p>
<% if (true) { %>
<p>
<% for (var i = 0; i < 2; i++) { %>
row
<% } %>