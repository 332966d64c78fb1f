<%
var i, x = 0, y = 1;
for (i = 1; i <= 300000; i++) {
  x = (x + i * 3) % 65536;
  y = y + x / 2;
}
Response.Write(x + " " + y);
%>
