<% Response.Status = "404 Not Found"; %>no such thing
