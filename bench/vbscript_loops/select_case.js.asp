<%
var i, n = 0, kind;
for (i = 1; i <= 200000; i++) {
  switch (i % 7) {
    case 0: kind = "zero"; break;
    case 1: case 2: kind = "low"; break;
    case 3: kind = "middle"; break;
    default: kind = "high";
  }
  switch (kind) {
    case "zero": n = n + 1; break;
    case "low": n = n + 2; break;
    case "middle": n = n + 3; break;
    default: n = n + 4;
  }
}
Response.Write(n);
%>
