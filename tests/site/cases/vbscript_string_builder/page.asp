<%@ Language="VBScript" %>
<%
' A class for long texts, Property Let with arguments, constants and dates in a report.
Const Title = "Report", Rate = 0.19, Negative = -3, Born = #5/17/1990#
Class StringBuilder
  Private pieces, used
  Private Sub Class_Initialize() : used = 0 : ReDim pieces(3) : End Sub
  Public Function Append(text)
    If used > UBound(pieces) Then ReDim Preserve pieces(UBound(pieces) * 2)
    pieces(used) = text
    used = used + 1
    Set Append = Me
  End Function
  Public Property Get Piece(index) : Piece = pieces(index) : End Property
  Public Property Let Piece(index, text) : pieces(index) = text : End Property
  Public Property Get Length
    Dim i
    For i = 0 To used - 1
      Length = Length + Len(pieces(i))
    Next
  End Property
  Public Default Property Get Text
    ReDim Preserve pieces(used - 1)
    Text = Join(pieces, "")
  End Property
End Class
Dim b : Set b = New StringBuilder
b.Append("<h1>").Append(Title).Append("</h1>")
b.Append Rate * 100
b.Append("%").Append Negative
b.Piece(1) = UCase(b.Piece(1))
Response.Write b.Length & " " & b & vbLf
Response.Write Year(Born) & " " & [Title] & " " & Title & Negative + 1
[odd name] = 5 : Response.Write " " & [odd name]
If b = "<h1>REPORT</h1>19%-3" Then Response.Write " equal" : Response.Write " both"
If 1 = 2 Then Response.Write "never" : Response.Write "never"
If 1 = 1 Then : Response.Write " colon" : End If
Rem a remark
Response.Write " " _
  & "continued" ' a remark behind
%>
