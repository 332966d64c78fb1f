<%= Server.HTMLEncode("<a>&\"") %>|<%= Server.URLEncode("a b/ä") %>|<%= Server.MapPath("x/../y.txt").replace(/.*\//, "") %>|<%= Server.ScriptTimeout %>
