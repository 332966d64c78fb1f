<%
function distance(x1, y1, x2, y2) {
  return Math.sqrt((x1 - x2) ** 2 + (y1 - y2) ** 2);
}
var i, x, y, total = 0, far = 0;
for (i = 1; i <= 50000; i++) {
  x = (i % 100) * 0.5;
  y = (i % 70) * 1.5;
  total = total + distance(x, y, 25, 50.5);
  if (distance(x, y, 0, 0) > 60) far = far + 1;
}
Response.Write(Math.floor(total) + " " + far);
%>
