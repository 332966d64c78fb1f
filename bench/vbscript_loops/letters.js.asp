<%
var text = "", i, c, turned = "", sum = 0;
for (i = 1; i <= 2000; i++) text = text + "Hello, World ";
for (i = 0; i < text.length; i++) {
  c = text.charCodeAt(i);
  if (c >= 97 && c <= 122) c = 97 + (c - 97 + 13) % 26;
  if (c >= 65 && c <= 90) c = 65 + (c - 65 + 13) % 26;
  turned = turned + String.fromCharCode(c);
  sum = (sum * 3 + c) % 9973;
}
Response.Write(turned.substr(0, 13) + turned.length + " " + sum);
%>
