<%	@ LANGUAGE = LiveScript CodePage="1252" @%>
text é
<% Response.Write(Response.CodePage); %>
