<%
// Keeps its session for a while.
Session("held") = true;
for (var end = Date.now() + 300; Date.now() < end;);
Response.Write("held");
%>
