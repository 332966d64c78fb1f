<%@ EnableSessionState="False" %>
<%
// Fails in the way that ?way= says, when its head and a part of its body are with the client.
Response.Write("begun ");
Response.Flush();
var all = [];
switch (Request.QueryString("way")(1)) {
  case "throw": throw new Error("too late");
  case "time": for (;;);
  case "memory": Server.ScriptTimeout = 60; for (;;) all.push(new Array(1000).fill(1.5));
  case "caught": try { throw new Error("too late"); } catch (e) { Response.Write("caught "); }
}
%>done
