<%
var declared = 1, maker = ["constr", "uctor"].join(""), caller = ["cal", "ler"].join("");
function own() { return own[caller]; }
function text(f) { %>[<%= Server.HTMLEncode(String(f)) %>]<% }
Response.Write(own[maker]("return typeof declared")() + "\n");
Response.Write(own() + "\n");
Response.Write(new Error().stack.split("@")[0] + "\n");
text(own);
text(text);
text(own[maker]);
%>
