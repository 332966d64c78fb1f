<%@ Language="VBScript" %>
<% Option Explicit
' A guest book as they were written: one connection, SQL put together, a loop that mixes HTML and code.
Dim conn, rs, sql, n
Set conn = Server.CreateObject("ADODB.Connection")
conn.Open "Driver=SQLite3;Database=:memory:"
conn.Execute "CREATE TABLE guests (id INTEGER PRIMARY KEY, name VARCHAR(40), words VARCHAR(200), visits INTEGER)"

Sub AddGuest(name, words, visits)
  Dim values
  values = "'" & Replace(name, "'", "''") & "', '" & Replace(words, "'", "''") & "', " & visits
  conn.Execute "INSERT INTO guests (name, words, visits) VALUES (" & values & ")"
End Sub

AddGuest "Ann", "It's <nice> here", 3
Call AddGuest("Bob", "", 1)
AddGuest "Carl O'Neill", "Hello" & vbCrLf & "World", 0

Function Plural(count, word)
  If count = 1 Then
    Plural = count & " " & word
  Else
    Plural = count & " " & word & "s"
  End If
End Function

sql = "SELECT id, name, words, visits FROM guests " & _
      "ORDER BY id DESC"
Set rs = conn.Execute(sql)
%><ul>
<% Do While Not rs.EOF %>  <li id="g<%= rs("id") %>"><b><%= Server.HTMLEncode(rs("name")) %></b>: <%
  If Len(rs("words")) > 0 Then
    Response.Write Replace(Server.HTMLEncode(rs("words")), vbCrLf, "<br>")
  Else %>(nothing)<% End If %> - <%= Plural(rs("visits"), "visit") %></li>
<%  n = n + rs("visits")
  rs.MoveNext
Loop
rs.Close : Set rs = Nothing %></ul>
<p><%= Plural(n, "visit") %> in all</p>
<%
Set rs = Server.CreateObject("ADODB.Recordset")
rs.Open "SELECT COUNT(*) AS total, MAX(visits) FROM guests", conn
Response.Write rs.Fields("total").Value & "/" & rs(1) & "/" & rs.Fields.Count
rs.Close
conn.Close
Set conn = Nothing
%>
