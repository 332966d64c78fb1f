<%@ Language="JavaScript" %>
<%
// Never ends, in the way that is asked for.
switch (String(Request.QueryString("way"))) {
  case "script": for (;;) try { for (;;); } catch (e) {}
  case "calls": for (;;) try { Response.Write(""); } catch (e) {}
}
%>served
