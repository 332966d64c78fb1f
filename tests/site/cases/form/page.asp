<%= Request.Form("name") %>|<%= Request.ServerVariables("HTTP_METHOD") %>|<%= Request.ServerVariables("HTTP_CONTENT_TYPE") %>|<%= Request.TotalBytes %>
