<%@ Language="VBScript" %><%
Const kTax = 0.19
Dim i, price, quantity, line, net, tax
For i = 1 To 100000
  price = 0.25 * (i Mod 80)
  quantity = 1 + i Mod 5
  line = price * quantity
  If quantity >= 4 Then line = line * 0.9
  net = net + line
  tax = tax + line * kTax
Next
Response.Write FormatNumber(net, 2, -1, 0, 0) & " " & FormatNumber(net + tax, 2, -1, 0, 0)
%>
