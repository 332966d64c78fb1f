<%
// A page that sends its visitor elsewhere goes on: neither its body nor its run ends there.
var mirt = Server.CreateObject("Mirt");
Response.Write("before ");
mirt.AddLog("user", "42");
mirt.AddLog("", "K\u00F6ln");
mirt.Redirect("next.asp?a=b c");
mirt.Write("after", false);
%>
