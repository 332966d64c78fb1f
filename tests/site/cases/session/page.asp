<%
Session("n") = 5; Session.Contents("list") = ["a", "b"]; Session.timeout = 7;
Response.Write(Session("N") + "|" + Session.Contents.Count + "|" + Session("list")[1] + "|" + Session.Timeout + "|" + Session.SessionID.length + "|" + (Session("none") === undefined));
try { Session("o") = {a: 1}; } catch (e) { Response.Write("|" + e.message); }
%>
