<%
Session("n") = (Session("n") || 0) + 1;
Response.Write(Session("n"));
%>
