<% String.prototype.charCodeAt = function () { return 60; }; %>changed: <%= Server.HTMLEncode("a<") %>
<% Array.prototype[0] = "HACK"; Object.prototype[2] = "HACK"; %>text
<% Array.from = function () { return [1, 2, 3]; }; Array.prototype.slice = function () { throw new Error("slice"); }; %>
<% Response.Write(true); Response.Write(Server.HTMLEncode(1.5)); %>
<% function lost(Response) { try { Response.Write(1); } catch (e) { half(e.message); } } function half(text) { %>[<%= text %>]<% } %>
<% lost(null); lost({}); lost({ Write: 5 }); %>
