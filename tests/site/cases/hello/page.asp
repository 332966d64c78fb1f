<%@ Language="JavaScript" CodePage="65001" %>
<% Response.Write("Hello"); %>, <%= "world" %>!
