<%
Session("n") = (Session("n") || 0) + 1;
Session.Abandon();
Response.Write("left");
%>
