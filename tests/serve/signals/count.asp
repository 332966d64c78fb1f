<% Session("n") = (Session("n") || 0) + 1; %><%= Session("n") %> of <%= Session.Timeout %> minutes
