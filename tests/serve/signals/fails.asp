<% throw new Error("told to the author"); %>
