<%@ Language="VBScript" %>
