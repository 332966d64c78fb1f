<%@ Language="VBScript" %>
<script runat="server" language="JScript">
function sum(list) { var n = 0; for (var i = 0; i < list.length; i++) n += list[i]; return n; }
function jsCallsVb(name) { return Greeting(name).toUpperCase(); }
var counter = { n: 1, next: function () { return ++this.n; } };
function numbers() { return [1, 2, 3]; }
</script>
<script runat="server" language="VBScript">
Function Greeting(who)
  Greeting = "Hello, " & who
End Function
</script>
<%
Dim o
Response.Write Greeting("Ann") & vbLf
Response.Write jsCallsVb("Bob") & vbLf
Response.Write sum(numbers()) & " " & counter.next() & " " & counter.n & vbLf
o = numbers()
Response.Write UBound(o) & " " & TypeName(o)
%>
