<%@ Language="VBScript" %>
<% ' Members of a script's own class, and what others of the same names answer.

Class Box
  Public Field, List
  Private hidden
  Private m_value
  Public Function Add(a, b) : Add = a + b : End Function
  Public Sub Raise1(n) : n = n + 1 : End Sub
  Private Function Secret() : Secret = 1 : End Function
  Public Property Get Value() : Value = m_value : End Property
  Public Property Let Value(v) : m_value = v : End Property
  Public Property Get Only() : Only = "only" : End Property
  Public Default Property Get Item(i) : Item = "item" & i : End Property
  Public Property Get Count() : Count = 7 : End Property
  Public Function Whole() : Whole = Me.Add(1, 2) & Me.Field : End Function
End Class
On Error Resume Next
Dim o, d, n, a
Set o = New Box
o.FIELD = "f" : Response.Write o.field & o.Add(1, 2) & o.ADD("a", "b") & o.Whole & " "
o.Value = 5 : o.value = o.VALUE * 2 : Response.Write o.Value & TypeName(o.value) & " "
a = Array(1, 2) : o.List = a : a(0) = 9 : Response.Write o.List(0) & UBound(o.List) & " "
n = 1 : o.Raise1 n : Response.Write n & " "
Response.Write o.Item(3) & o(4) & o.Only & " "
Sub T(what) : Response.Write what & Err.Number & " " : Err.Clear : End Sub
x = o.Secret() : T "secret"
x = o.hidden : T "hidden"
o.hidden = 1 : T "let hidden"
x = o.Add(1) : T "few"
x = o.Add(1, 2, 3) : T "many"
x = o.Add : T "none"
x = o.Value(1) : T "indexed"
o.Only = 1 : T "read only"
x = o.Nope : T "nope"
Set d = CreateObject("Scripting.Dictionary")
d.Add 1, 2 : Response.Write d.Count & d.Item(1) & " "
x = d.Value : T "dictionary"
Set d = Nothing
x = d.Count : T "nothing"
d.Field = 1 : T "let nothing"
x = e.Count : T "empty"
x = Null : y = x.Count : T "null"
x = "text" : y = x.Count : T "text"
o.Field = Null : T IsNull(o.Field)
o.Field = o : T "object as value"
Set o.Field = New Box : o.Field.Field = 3 : Response.Write o.Field.Field & " "
With o.Field : .Field = 4 : Response.Write .Field & .Add(2, 3) & .Count & " " : End With
Set j = Made() : Response.Write j.Count & j.Add(3, 4) & " " : j.Field = 8 : Response.Write j.field
%>
<script runat="server" language="JScript">function Made() { return { Count: 3, add: function (a, b) { return a * b; }, field: 0 }; }</script>
