a<% Server.Execute("part.asp"); %>b<% Server.Transfer("last.asp"); %>never
