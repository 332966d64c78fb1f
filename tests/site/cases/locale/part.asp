<%@ LCID="1041" %>
<% Response.Write("in part " + Response.LCID + "\n"); Response.LCID = 2057; %>
