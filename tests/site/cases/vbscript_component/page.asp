<%@ Language="VBScript" %>
<% Option Explicit
' Every member of the controller and of templators, called from VBScript.
Dim page, log, t, stream, who, shared, c, conn, util, answer, found
Set shared = Me
Set page = Server.CreateObject("Mirt")
page.AddScript Me
page.Name = "vb"
page.TemplateFolder = Server.MapPath("templates")
page.TemplatePermissionPath = Server.MapPath("templates")
page.TemplateExt = ".html"
page.TemplateCharset = "utf-8"
page.DefaultTemplate = "main"
page.CommandName = "do"
page.Backable = True
page.NullIsEmpty = True
page.SelfEncode = True
page.CacheTemplate = False
page.SubmitDecodeOnPutInto = True
page.Process
Response.Write vbLf & log

Sub On_FirstAccess(p) : log = log & "first " : End Sub
Sub On_StartProcess(p)
  log = log & "start(" & p.Command & p.Name & p.CommandName & p.Backable & p.NullIsEmpty & ") "
  p.Bag("n") = 1
  p.PutIntoView "names", False
  p.PutIntoBag "names", True
  p.PutIntoProp "who", False
  log = log & who & " " & p.View("names") & " " & UBound(p.ToArray(p.Request("names"))) & p.ToArray(p.Request("names"))(1) & " "
End Sub
Sub On_StartCommand(p) : log = log & "startcommand(" & p.Command & ") " : End Sub
Sub OnCommand_Save(p)
  p.SetView "done", p.Request("who")
  log = log & "save "
  p.AddMessage "Is <needed>", "who"
  log = log & p.MessageExists("who") & p.MessageExists("x") & " "
End Sub
Sub On_EndCommand(p) : log = log & "endcommand " : End Sub
Sub On_StartDraw(p) : log = log & "startdraw(" & p.DefaultTemplate & ") " : End Sub
Sub OnDrawTemplate_main(p) : log = log & "drawtemplate " : End Sub
Sub OnDraw_Rows(p, texts)
  Dim rows, i
  Set rows = p.NewTemplator("Row")
  Set rows.Script = shared
  For i = 1 To 2
    p.SetView "i", i
    rows.ProcessTemplate texts(0)
  Next
  p.Write rows.Flush, False
  log = log & rows.Main.Name & " "
End Sub
Sub RowTwice(t, texts) : t.Write texts(0) & texts(0), True : End Sub
Sub OnDraw_Other(p, texts)
  p.DrawTemplate "other"
  p.Write "<", True
  p.Write "<", False
  p.Write p.ToCommand("Go") & p.ToParameter("id", "a b"), False
End Sub
Sub On_EndDraw(p)
  log = log & "enddraw "
  found = p.FireEvent("Fired", "it", answer)
  log = log & found & " "
  found = p.FireEvent("NotThere", "it", answer)
  log = log & found & " "
End Sub
Function Fired(p, what)
  log = log & "fired " & what & " "
  Fired = "answer"
End Function
Sub On_EndProcess(p) : log = log & "end " : p.Abandon : End Sub
Sub On_LastAccess(p) : log = log & "last" : End Sub

Set t = Server.CreateObject("Mirt.TextTemplator")
Set t.Script = Me
t.ProcessTemplate "a(#who#)b"
t.Write "!", True
Response.Write vbLf & t.Flush()
Set stream = Server.CreateObject("ADODB.Stream")
stream.Type = 2 : stream.Charset = "utf-8" : stream.Open
Set page = Server.CreateObject("Mirt")
Set page.Output = stream
page.Write "to the stream", True
stream.Position = 0
Response.Write vbLf & stream.ReadText
Set conn = Server.CreateObject("ADODB.Connection")
conn.Open "Driver=SQLite3;Database=:memory:"
Set c = page.NewADOCommand(conn, "SELECT 6 * 7 AS answer", 1)
Response.Write vbLf & c.Execute()("answer") & vbLf
Set util = Server.CreateObject("Mirt.Utility")
Response.Write util.MD5("abc", 0) & " " & util.SHA1("abc", 0) & " " & util.Base64Encode("Zo" & ChrW(235), 0) & " " & _
  util.Base64Decode("Wm/Dqw==", 0) & " " & util.URLEncode("a b/" & ChrW(233), 0) & " " & util.URLDecode("a%20b", 0) & " " & _
  util.HTMLEncode("<""&>") & " " & util.Trim("  a b" & ChrW(12288)) & " " & util.SubmitDecode("&#12354;&#x41;") & " " & _
  util.FindString(Array("a", "b"), "b") & " " & Len(util.MakeGUID(True)) & " " & Len(util.MakeKey(5, "ab")) & " " & _
  LenB(util.Base64Decode("AAEC", -2)) & " " & TypeName(util.Base64Decode("AAEC", -2))
util.Sleep 1
On Error Resume Next
page.NewMail "localhost", 25
Response.Write vbLf & Hex(Err.Number)
%>
