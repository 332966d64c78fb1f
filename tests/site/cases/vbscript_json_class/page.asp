<%@ Language="VBScript" %>
<%
' JSON out of whatever it is given.
Class Json
  Private depth
  Private Function Quoted(text)
    Dim i, code, made
    For i = 1 To Len(text)
      code = AscW(Mid(text, i, 1))
      If code < 0 Then code = code + 65536
      Select Case code
        Case 34: made = made & "\"""
        Case 92: made = made & "\\"
        Case 10: made = made & "\n"
        Case 9: made = made & "\t"
        Case Else
          If code < 32 Or code > 126 Then
            made = made & "\u" & Right("000" & LCase(Hex(code)), 4)
          Else
            made = made & ChrW(code)
          End If
      End Select
    Next
    Quoted = """" & made & """"
  End Function
  Public Default Function Write(value)
    Dim i, parts(), key
    Select Case VarType(value)
      Case vbEmpty, vbNull
        Write = "null"
      Case vbBoolean
        If value Then Write = "true" Else Write = "false"
      Case vbInteger, vbLong, vbByte
        Write = CStr(value)
      Case vbSingle, vbDouble, vbCurrency
        Write = Replace(CStr(value), ",", ".")
      Case vbString
        Write = Quoted(value)
      Case vbDate
        Write = Quoted(Year(value) & "-" & Right("0" & Month(value), 2) & "-" & Right("0" & Day(value), 2))
      Case vbObject
        If value Is Nothing Then
          Write = "null"
        ElseIf TypeName(value) = "Dictionary" Then
          ReDim parts(value.Count - 1)
          i = 0
          For Each key In value.Keys
            parts(i) = Quoted(key) & ":" & Me.Write(value(key))
            i = i + 1
          Next
          Write = "{" & Join(parts, ",") & "}"
        Else
          Err.Raise vbObjectError + 1, "Json", "No JSON for " & TypeName(value)
        End If
      Case Else
        If IsArray(value) Then
          Write = "["
          For i = 0 To UBound(value)
            If i > 0 Then Write = Write & ","
            Write = Write & Me.Write(value(i))
          Next
          Write = Write & "]"
        End If
    End Select
  End Function
End Class

Dim writer, d, inner
Set writer = New Json
Set d = CreateObject("Scripting.Dictionary")
d.Add "name", "A ""quoted"" \ tab" & vbTab & "line" & vbLf & "k" & ChrW(246) & "ln " & ChrW(-10179) & ChrW(-8704)
d.Add "n", 1
d.Add "list", Array(1, 2.5, "three", True, Null, Empty, Array(), CByte(7), -100000)
Set d("none") = Nothing
d("day") = DateSerial(2024, 2, 29)
d("price") = CCur("12.5")
Set inner = CreateObject("Scripting.Dictionary")
Set d("inner") = inner
Response.Write writer(d) & vbLf
On Error Resume Next
Response.Write writer.Write(writer)
Response.Write Err.Number - vbObjectError & " " & Err.Source & ": " & Err.Description
%>
