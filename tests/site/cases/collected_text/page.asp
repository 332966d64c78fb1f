order: <% var bytes = new Uint8Array([98, 99]); %>a<% Response.BinaryWrite(bytes); %>d<%= "e" %><% Response.Write("f"); Response["Write"]("g"); %>
cleared: gone<% Response.Clear(); %>kept
<% function half(text) { %>[<%= text %>]<% } half("from a function"); half(1); %>
values: <%= -0 %> <%= -5 %> <%= 2147483648 %> <%= 1.5 %> <%= true %> <%= false %><%= null %><%= undefined %> <%= [1, 2] %>
forms: <% Response.Write(...["c"]); (1, Response.Write)("d"); var w = Response.Write; w("e"); %>
shadowed: <% (function (Response) { Response.Write("x", 1); })({ Write: function (a, b) { half(a + b); } }); %>
other: <% (function () { var Server = { HTMLEncode: function (a) { return "own " + a; } }; %><%= Server.HTMLEncode("<") %><% })(); %>
encoded: <%= Server.HTMLEncode("<a href=\"x\">&'") %> <%= Server.URLEncode("a b&c=d/e-f_g.h*~") %>
others: <%= Server.HTMLEncode("é<") %> <%= Server.URLEncode("é") %> <%= Server.HTMLEncode(1.5) %> <%= Server.HTMLEncode(null) %>|
all: <%
var all = "", same = true;
for (var c = 0; c < 128; c++) {
  var one = String.fromCharCode(c);
  same = same && Server["HTMLEncode"](one) === Server.HTMLEncode(one) && Server["URLEncode"](one) === Server.URLEncode(one);
}
Response.Write(same); %>
pair: <%= "\uD83D" %><%= "\uDE00" %>
failing: <% try { Response.Write(); } catch (e) { Response.Write(e.message); } %>
<% try { Response.Write(nothing.at.all); } catch (e) { Response.Write(e.message); } %>
<% try { null.Response.Write(1); } catch (e) { Response.Write(e.message); } %>
<% try { var Nobody; Nobody.Write(Server.HTMLEncode(Nobody.x)); } catch (e) { Response.Write(e.message); } %>
page code page: <% Response.CodePage = 1252; %>é<% Response.CodePage = 65001; %>é
executed: <% Server.Execute("part.asp"); %> and on
long: <% for (var i = 0; i < 20000; i++) { %>12345<% } %>
unbuffered: <% Response.Buffer = false; %>a<%= "b" %><% Response.Write("c"); %> <%= Response.Buffer %>
end<% try { Response.End(); } finally { %> not this<% } %>
