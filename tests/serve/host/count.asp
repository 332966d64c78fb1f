<% Session("n") = (Session("n") || 0) + 1; %><%= Session("n") %> <%= Session.SessionID %>
