kept<% Response.End(); Response.Write("never"); %>never
