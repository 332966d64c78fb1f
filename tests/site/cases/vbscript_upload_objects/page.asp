<%@ Language="VBScript" %>
<% Option Explicit
' Every member of what an upload gives, called from VBScript; what a first and a last access answer; and template files
' that templators draw.
Dim page, log, Title
Title = "<title>"
Set page = Server.CreateObject("Mirt")
page.AddScript Me
page.Name = "visit"
page.Process
Response.Write log

Sub Tell(what)
  log = log & what & vbLf
End Sub
' There is nothing that these could refuse.
Function On_FirstAccess(p)
  Tell "first"
  On_FirstAccess = False
End Function
Function On_LastAccess(p)
  Tell "last"
  On_LastAccess = False
End Function
Sub On_StartProcess(p)
  Dim form, tags, photo, at
  Set form = p.Request
  Set tags = form("tags")
  Tell TypeName(form) & " " & TypeName(tags) & " " & form.Count & " " & tags.Count & " " & IsEmpty(form("TAGS"))
  Tell tags & "; " & tags.Item & "; " & tags(1) & "; " & tags.Item("2") & "; " & form.Item("tags")(2)
  Set photo = form("photo")(1)
  Tell TypeName(photo) & " " & photo.FileName & " " & photo.filename2 & " [" & photo.ContentType & "]"
  With photo.Stream
    Tell TypeName(photo.Stream) & " " & .Type & " " & .Position & " " & .Size & " " & .State
    Tell LenB(.Read(1)) & " " & .Position & " " & .EOS
    .Position = 0
    Tell p.Base64Encode(.Read, 0) & " " & .EOS
    .SaveToFile Server.MapPath("saved.bin"), 2
  End With
  On Error Resume Next
  Tell tags(0) : Failed
  Tell tags(3) : Failed
  Tell tags("x") : Failed
  Tell form.Key(1) : Failed
  For Each at In form : Next
  Failed
  For Each at In tags : Next
  Failed
  photo.FileName = "other" : Failed
  Tell photo.Nope : Failed
End Sub
Sub Failed
  Tell "error " & Hex(Err.Number)
  Err.Clear
End Sub
Sub OnCommand_save(p) : Tell "save " & p.View("who") : End Sub
Function On_StartDraw(p)
  Dim rows, alone
  On_StartDraw = False
  Set rows = p.NewTemplator("Row")
  Set rows.Script = Me
  p.SetView "who", "<Ann>"
  rows.ProcessTemplateFile Server.MapPath("templates/row.html"), "utf-8"
  Tell "row: " & rows.Flush
  Set alone = Server.CreateObject("Mirt.TextTemplator")
  Set alone.Script = Me
  alone.ProcessTemplateFile Server.MapPath("templates/alone.html"), "windows-1252"
  Tell "alone: " & alone.Flush
  On Error Resume Next
  rows.ProcessTemplateFile Server.MapPath("templates/none.html"), "utf-8"
  Tell "no file: " & (Err.Number <> 0)
  rows.ProcessTemplateFile Server.MapPath("templates/row.html")
  Tell "no charset: " & Err.Number
End Function
Sub RowBold(t, texts)
  t.Write "*" & texts(0) & "*", False
End Sub
Sub Bold(t, texts)
  t.Write "_" & texts(0) & "_"
End Sub
Sub On_EndProcess(p)
  p.Abandon
End Sub
%>
