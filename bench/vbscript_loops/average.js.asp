<%
var marks = [], i, round, sum, average;
for (i = 0; i <= 999; i++) marks[i] = (i % 40) / 4;
for (round = 1; round <= 200; round++) {
  sum = 0;
  for (i = 0; i <= 999; i++) sum = sum + marks[i];
  average = sum / 1000;
}
Response.Write(sum + " " + average);
%>
