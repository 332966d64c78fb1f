<%
Response.Cookies("plain") = "a b";
Response.Cookies("user")("name") = "Ann";
Response.Cookies("user").Path = "/x";
Response.Write(Request.Cookies("in") + "|" + Request.Cookies("k")("b") + "|" + String(Request.Cookies("k").HasKeys));
%>
