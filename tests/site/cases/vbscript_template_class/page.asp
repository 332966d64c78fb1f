<%@ Language="VBScript" %>
<% Option Explicit
' A template engine of the kind that every shop had: a class over a dictionary.
Class Template
  Private m_text, m_values
  Public Tag
  Private Sub Class_Initialize()
    Set m_values = Server.CreateObject("Scripting.Dictionary")
    m_values.CompareMode = vbTextCompare
    Tag = "%"
  End Sub
  Public Property Let Text(ByVal value)
    m_text = value
  End Property
  Public Property Get Text
    Text = m_text
  End Property
  Public Default Property Get Value(name)
    If m_values.Exists(name) Then
      If IsObject(m_values(name)) Then Set Value = m_values(name) Else Value = m_values(name)
    End If
  End Property
  Public Property Let Value(name, newValue)
    m_values(name) = newValue
  End Property
  Public Property Set Value(name, newValue)
    Set m_values(name) = newValue
  End Property
  Public Function Draw()
    Dim key, result
    result = m_text
    For Each key In m_values
      If Not IsObject(m_values(key)) Then
        result = Replace(result, "{" & Tag & key & Tag & "}", m_values(key), 1, -1, 1)
      Else
        result = Replace(result, "{" & Tag & key & Tag & "}", m_values(key).Draw)
      End If
    Next
    Draw = result
  End Function
  Public Sub Clear
    m_values.RemoveAll
  End Sub
End Class

Dim page, row, rows, i
Set row = New Template
row.Text = "<td>{%n%}</td><td>{%Square%}</td>"
rows = ""
For i = 1 To 3
  row("n") = i
  row("square") = i ^ 2
  rows = rows & "<tr>" & row.Draw() & "</tr>" & vbLf
Next
Set page = New Template
With page
  .Text = "<h1>{%title%}</h1>" & vbLf & "{%rows%}{%last%}"
  .Value("title") = "Squares"
  .Value("rows") = rows
  Set .Value("last") = row
  Response.Write .Draw
  Response.Write vbLf & TypeName(page) & " " & TypeName(.Value("last")) & " " & page("TITLE") & " " & IsEmpty(.Value("none"))
  .Clear
End With
Response.Write vbLf & Len(page("title")) & (page Is page) & (page Is row) & (Not page Is Nothing)
%>
