<%@ Language="PerlScript" %>
