<% Session.Abandon(); %><%= Session("n") %>
