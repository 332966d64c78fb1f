<%
var a = [], i, n = 0, round;
for (i = 0; i <= 999; i++) a[i] = i;
for (round = 1; round <= 300; round++) {
  for (var one of a) n = n + one;
}
Response.Write(n);
%>
