<%@ Language="JavaScript" EnableSessionState="False" %><% Response.Write("quick"); Response.End(); %>
