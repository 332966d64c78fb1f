<%@ EnableSessionState="False" %><%
// What every good client asks for: a small page.
for (var i = 0, sum = 0; i < 100; i++) sum += i;
Response.Write(sum);
%>
