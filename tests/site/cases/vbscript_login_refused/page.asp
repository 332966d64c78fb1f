<%@ Language=VBScript %>
<!-- #include file="check.inc" -->
<% If Not IsKnown(Request.Form("user"), Request.Form("password")) Then %>
<p class="error">Wrong: <%= Server.HTMLEncode(Request.Form("user")) %>, <%= attempts %></p>
<% Else %>
<p>Welcome</p>
<% End If
   If attempts >= 1 Then Response.End %>
never shown
