<%
var i, price, quantity, line, net = 0, tax = 0;
const kTax = 0.19;
for (i = 1; i <= 100000; i++) {
  price = 0.25 * (i % 80);
  quantity = 1 + i % 5;
  line = price * quantity;
  if (quantity >= 4) line = line * 0.9;
  net = net + line;
  tax = tax + line * kTax;
}
Response.Write(net.toFixed(2) + " " + (net + tax).toFixed(2));
%>
