<% console.log("from a part"); %>
