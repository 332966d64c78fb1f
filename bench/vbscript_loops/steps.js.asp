<%
var i, k, n = 0, x;
for (i = 1000; i >= 2; i -= 2) {
  for (k = 1; k <= i; k += 3) n = (n + k * i) % 65521;
}
for (x = 0; x <= 5000; x += 0.5) {
  if (x > 1000) n = n + 1;
}
Response.Write(n);
%>
