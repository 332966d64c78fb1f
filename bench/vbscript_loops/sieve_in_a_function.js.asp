<%
function primes(last) {
  var composite = [], i, k, n = 0;
  for (i = 0; i <= last; i++) composite[i] = 0;
  i = 2;
  while (i <= last) {
    if (composite[i] === 0) {
      n = n + 1;
      k = i + i;
      while (k <= last) {
        composite[k] = 1;
        k = k + i;
      }
    }
    i = i + 1;
  }
  return n;
}
Response.Write(primes(50000));
%>
