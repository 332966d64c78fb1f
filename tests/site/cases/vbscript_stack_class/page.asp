<%@ Language="VBScript" %>
<% Option Explicit
' Classes: initialised and terminated, with private arrays, properties of all kinds, and a list made of them.
Class Stack
  Private items(), m_count
  Private Sub Class_Initialize
    m_count = 0
    ReDim items(1)
    Response.Write "(made)"
  End Sub
  Private Sub Class_Terminate
    Response.Write "(gone with " & m_count & ")"
  End Sub
  Public Property Get Count : Count = m_count : End Property
  Public Sub Push(ByVal what)
    If m_count > UBound(items) Then ReDim Preserve items(UBound(items) * 2 + 1)
    If IsObject(what) Then Set items(m_count) = what Else items(m_count) = what
    m_count = m_count + 1
  End Sub
  Public Function Pop()
    If m_count = 0 Then Err.Raise vbObjectError + 513, "Stack", "The stack is empty"
    m_count = m_count - 1
    If IsObject(items(m_count)) Then
      Set Pop = items(m_count)
      Set items(m_count) = Nothing
    Else
      Pop = items(m_count)
    End If
  End Function
  Public Function Me1()
    Set Me1 = Me
  End Function
End Class

Class Node
  Public Name
  Private m_next
  Public Property Set NextNode(node) : Set m_next = node : End Property
  Public Property Get NextNode
    If IsObject(m_next) Then Set NextNode = m_next Else Set NextNode = Nothing
  End Property
End Class

Sub Use
  Dim s, i
  Set s = New Stack
  For i = 1 To 5
    s.Push i * i
  Next
  s.Push Array("a", "b")
  Response.Write s.Count & ":" & s.Pop()(1)
  Do While s.Count > 1
    Response.Write " " & s.Pop
  Loop
  Response.Write " " & s.Me1.Me1.Count & " "
End Sub
Use
Response.Write vbLf

Dim head, n, name
For Each name In Array("c", "b", "a")
  Set n = New Node
  n.Name = name
  If Not IsEmpty(head) Then Set n.NextNode = head
  Set head = n
Next
Set n = head
Do Until n Is Nothing
  Response.Write n.Name
  Set n = n.NextNode
Loop
Response.Write " " & (n Is Nothing) & " " & TypeName(n) & " " & TypeName(head) & vbLf

Dim t : Set t = New Stack
On Error Resume Next
t.Pop
Response.Write Err.Number - vbObjectError & " " & Err.Source & " " & Err.Description & vbLf
Err.Clear
t.items(0) = 1
Response.Write Err.Number & vbLf
On Error GoTo 0
Set t = Nothing
Response.Write " end"
%>
