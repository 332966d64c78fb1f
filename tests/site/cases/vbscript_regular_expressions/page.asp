<%@ Language="VBScript" %>
<% Option Explicit
Dim re, m, matches, s
Set re = New RegExp
re.Pattern = "(\w+)@(\w+)\.com"
re.IgnoreCase = True
re.Global = True
s = "Write to ann@example.com or BOB@TEST.COM, not to carl@example.org"
Response.Write re.Test(s) & vbLf
Set matches = re.Execute(s)
Response.Write matches.Count & vbLf
For Each m In matches
  Response.Write m.FirstIndex & " " & m.Length & " " & m.Value & " " & m.SubMatches(0) & " at " & m.SubMatches.Item(1) & " " & m.SubMatches.Count & vbLf
Next
Response.Write matches(0) & " " & matches.Item(1).Value & vbLf
Response.Write re.Replace(s, "<$1 of $2>") & vbLf
re.Global = False
Response.Write re.Replace(s, "$&$$") & vbLf
Set re = New RegExp
Response.Write "[" & re.Pattern & "]" & re.Global & re.IgnoreCase & re.MultiLine & vbLf
re.Pattern = "^b.*$" : re.MultiLine = True
Response.Write re.Execute("a" & vbLf & "bcd" & vbLf & "e")(0).FirstIndex & vbLf
Function IsEmail(text)
  Dim r
  Set r = New RegExp
  r.Pattern = "^[\w.+-]+@[\w-]+(\.[\w-]+)+$"
  IsEmail = r.Test(text)
End Function
Response.Write IsEmail("a.b@c.de") & IsEmail("a@b") & IsEmail("") & vbLf
re.Pattern = "(a)|(b)"
Set m = re.Execute("b")(0)
Response.Write "[" & m.SubMatches(0) & "][" & m.SubMatches(1) & "]" & vbLf
Function Doubled(whole, digits, position, text)
  Doubled = "{" & digits * 2 & "@" & position & "}"
End Function
re.Global = True : re.Pattern = "#(\d+)"
Response.Write re.Replace("a #4 b #21", GetRef("Doubled")) & vbLf
On Error Resume Next
re.Pattern = "(unclosed"
re.Test "x"
Response.Write Err.Number
%>
