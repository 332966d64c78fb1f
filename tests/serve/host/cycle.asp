<%
// Two dictionaries that hold each other, and that other pages may be using, are never let go.
var one = Server.CreateObject("Scripting.Dictionary");
var other = Server.CreateObject("Scripting.Dictionary");
one.Add("other", other);
other.Add("one", one);
Application("one") = one;
Application.Contents.Remove("one");
%>held
