<%
function Counter() { this.count = 0; }
Counter.prototype.add = function (n) { this.count = this.count + n; };
Counter.prototype.value = function () { return this.count; };
var c = new Counter(), i, high = 0;
for (i = 1; i <= 100000; i++) {
  c.add(i % 7);
  if (c.value() > 1000 && high === 0) high = i;
}
Response.Write(c.value() + " " + high);
%>
