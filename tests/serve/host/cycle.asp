<%
// Two objects that hold each other are never let go.
var one = Server.CreateObject("Scripting.Dictionary");
var other = Server.CreateObject("Scripting.Dictionary");
one.Add("other", other);
other.Add("one", one);
%>held
