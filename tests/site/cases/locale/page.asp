<%@ Language="JScript" LCID="1031" %>
<%
// Dates and numbers as the page's locale writes them; a page that it runs shares the locale.
var when = new Date(2001, 1, 3, 16, 5, 6);
function write(name) {
  Response.Write(name + " " + Response.LCID + ": ");
  Response.Write(when);
  Response.Write(" ");
  Response.Write(-1234.5);
  Response.Write(" ");
  Response.Write([0.5, true, "1.5"]);
  Response.Write("\n");
}
write("directive");
Server.Execute("part.asp");
write("part");
Response.LCID = 1041;
write("response");
Session.LCID = 1033;
write("session");
Response.LCID = 2048;
write("neutral");
Response.Write(Session.LCID + "\n");
var objects = { Response: Response, Session: Session };
for (var name in objects) {
  try {
    objects[name].LCID = 99999;
  } catch (error) {
    Response.Write(name + ": " + error.message + "\n");
  }
}
try {
  Session.CodePage = 7;
} catch (error) {
  Response.Write("Session: " + error.message + "\n");
}
%>
