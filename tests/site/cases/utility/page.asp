<% var u = Server.CreateObject("Mirt.Utility"); %><%= u.MD5("abc", 0) %>|<%= u.HanToZen("ab ｶﾞ") %>|<%= u.ZenToHan("ガ") %>|<%= u.Base64Encode("é", 0) %>
