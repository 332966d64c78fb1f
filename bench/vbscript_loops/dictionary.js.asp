<%
var d = Server.CreateObject("Scripting.Dictionary"), i, key, n = 0;
for (i = 1; i <= 5000; i++) {
  key = "k" + i % 100;
  if (d.Exists(key)) d.Item(key) = d.Item(key) + 1;
  else d.Add(key, 1);
}
for (i = 0; i <= 99; i++) n = n + d.Item("k" + i);
Response.Write(n);
%>
