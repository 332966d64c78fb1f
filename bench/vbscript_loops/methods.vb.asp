<%@ Language="VBScript" %><%
Class Counter
  Private count
  Public Sub Class_Initialize() : count = 0 : End Sub
  Public Sub Add(n) : count = count + n : End Sub
  Public Property Get Value() : Value = count : End Property
End Class
Dim c, i, high
Set c = New Counter
For i = 1 To 100000
  c.Add i Mod 7
  If c.Value > 1000 And high = 0 Then high = i
Next
Response.Write c.Value & " " & high
%>
