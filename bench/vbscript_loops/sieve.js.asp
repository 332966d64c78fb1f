<%
var composite = new Array(50001), i, k, n = 0;
for (i = 0; i <= 50000; i++) composite[i] = false;
for (i = 2; i <= 50000; i++) {
  if (!composite[i]) {
    n = n + 1;
    for (k = i + i; k <= 50000; k += i) composite[k] = true;
  }
}
Response.Write(n);
%>
