<%@ EnableSessionState="False" %>
<%= Request.Form("a") %>
