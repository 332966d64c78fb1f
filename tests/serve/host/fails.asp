<%@ Language="JavaScript" %>
<%
function fail() {
  throw new Error(Request.QueryString("text"));
}
Response.AppendToLog("noted");
fail();
%>
