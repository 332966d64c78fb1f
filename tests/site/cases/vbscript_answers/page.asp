<%@ Language="VBScript" %>
<% Option Explicit
' What objects of the host and the component assign to the variables that they are given.
Dim page, answer, conn, n, rs, list(2), i, what, sql, kept, cmd, d, bytes
Set page = Server.CreateObject("Mirt")
page.AddScript Me
what = "in"
page.FireEvent "Fired", what, answer
Response.Write answer & "," & what & vbLf
Response.Write page.FireEvent("Fired", what, answer) & answer & "," & what & vbLf
page.FireEvent "Fired", (what), list(1)
Response.Write what & "," & list(1) & vbLf
answer = Array("an", "array")
page.FireEvent "Fired", answer(1), answer
Response.Write answer & vbLf
Function Fired(p, x)
  x = x & "+"
  Fired = "got " & x
End Function

Set conn = Server.CreateObject("ADODB.Connection")
conn.Open "Driver=SQLite3;Database=:memory:"
conn.Execute "CREATE TABLE t (a INTEGER)"
sql = "INSERT INTO t VALUES (1), (2), (3)"
conn.Execute sql, n
Response.Write n & TypeName(n) & " "
Set rs = conn.Execute("UPDATE t SET a = a + 1 WHERE a > 1", n)
Response.Write n & " "
n = 7
conn.Execute "DELETE FROM t", (n)
Response.Write n & " "
conn.Execute sql, list(2)
Response.Write list(2) & sql & vbLf
Set cmd = Server.CreateObject("ADODB.Command")
Set cmd.ActiveConnection = conn
cmd.CommandText = "DELETE FROM t WHERE a = 2"
cmd.Execute n
Response.Write n & " "
With conn
  .Execute "DELETE FROM t", n
End With
Response.Write n & vbLf

' Through parameters, fields and results.
Sub Run(sql, affected)
  conn.Execute sql, affected
End Sub
Sub RunByValue(sql, ByVal affected)
  conn.Execute sql, affected
  Response.Write affected
End Sub
Sub Ask(o, name, ByRef given)
  o.FireEvent name, "by", given
End Sub
Class Db
  Private m_n
  Public Sub Run(sql)
    conn.Execute sql, m_n
    Response.Write m_n & " "
  End Sub
  Public Function Count(sql)
    conn.Execute sql, Count
  End Function
End Class
Run sql, n : Response.Write n & " "
n = 9
RunByValue "DELETE FROM t", n : Response.Write n & " "
Ask page, "Fired", answer : Response.Write answer & " "
Set d = New Db
d.Run sql
Response.Write d.Count("DELETE FROM t WHERE a < 3") & vbLf

' What assigns to nothing leaves everything as it is.
Set d = Server.CreateObject("Scripting.Dictionary")
kept = "k" : n = 1.5
For i = 1 To 3
  d.Add i, kept
Next
d.Add kept, n
Response.Write d.Exists(kept) & d.Item(kept) & kept & TypeName(n) & i & vbLf
On Error Resume Next
conn.Execute "no statement", n
Response.Write n & (Err.Number <> 0)
%>
