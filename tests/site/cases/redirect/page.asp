dropped <% try { Response.Redirect("other.asp?a=b c"); } catch (e) { Response.Write("caught"); } finally { Response.Write("finally"); } %> never
