<%@ Language="JavaScript" CodePage="65001" %>
<% Session("visits") = Number(Session("visits") || 0) + 1; %>visits: <%= Session("visits") %>
