<%
var m = [], i, j, n = 0, round;
for (i = 0; i <= 99; i++) m[i] = [];
for (round = 1; round <= 20; round++) {
  for (i = 0; i <= 99; i++) {
    for (j = 0; j <= 99; j++) m[i][j] = i + j + round;
  }
  for (i = 0; i <= 99; i++) {
    for (j = 0; j <= 99; j++) n = n + m[j][i];
  }
}
Response.Write(n);
%>
