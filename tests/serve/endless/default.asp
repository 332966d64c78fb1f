<%@ Language="JavaScript" %>
<%
// Never ends, in the way that is asked for.
switch (String(Request.QueryString("way"))) {
  case "script": for (;;) try { for (;;); } catch (e) {}
  case "promises": (function again() { Promise.resolve().then(again); })(); break;
  case "awaits": (async function () { for (;;) await null; })(); break;
  case "thenable": { let again = { then(resolve) { resolve(again); } }; Promise.resolve(again); break; }
  case "transfer": Server.Transfer("default.asp");
  case "calls": for (;;) try { Response.Write(""); } catch (e) {}
}
%>served
