<%
var s = "the quick brown fox jumps over the lazy dog ", i, n = 0, text = "";
for (i = 1; i <= 5000; i++) text = text + s;
for (i = 0; i < text.length; i++) {
  if (text.charAt(i) === "o") n = n + 1;
}
Response.Write(n);
%>
