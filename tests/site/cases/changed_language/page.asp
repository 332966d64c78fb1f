<% String.prototype.charCodeAt = function () { return 60; }; %>changed: <%= Server.HTMLEncode("a<") %>
