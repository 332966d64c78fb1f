<%@ Language="VBScript" %>
<% Option Explicit
' What an event refuses by answering False, with instances of a class as scripts; and what other pages do not call.
Dim t, stream, util
Class Script
  Public Refused, Who
  Private Sub Class_Initialize : Who = "me" : End Sub
  Private Function Says(name)
    Response.Write name & " "
    Says = name <> Refused
  End Function
  Public Function On_FirstAccess(p) : On_FirstAccess = Says("first") : End Function
  Public Function on_startprocess(p)
    p.SetView "n", 1
    p.Include("side") = "part"
    on_startprocess = Says("startprocess")
  End Function
  Public Function On_StartCommand(p) : On_StartCommand = Says("startcommand(" & p.Command & ")") : End Function
  Public Function OnCommand_Save(p)
    p.Command = "Saved"
    OnCommand_Save = Says("command")
  End Function
  Public Function On_EndCommand(p) : On_EndCommand = Says("endcommand") : End Function
  Public Function On_StartDraw(p) : On_StartDraw = Says("startdraw(" & p.Template & ")") : End Function
  Public Function ONDRAWTEMPLATE_MAIN(p)
    If Refused = "drawtemplate" Then p.Template = "second"
    If Refused = "notfound" Then p.Template = "none"
    ONDRAWTEMPLATE_MAIN = Says("drawtemplate")
  End Function
  Public Function OnTemplate_main(p)
    If Refused = "draws" Then
      Response.Write "drawn "
    Else
      OnTemplate_main = False
    End If
  End Function
  Public Function On_TemplateNotFound(p)
    p.Template = "second"
    On_TemplateNotFound = Says("notfound")
  End Function
  Public Function On_EndDraw(p)
    If Refused = "enddraw" Then p.AddLog "from", "the page"
    On_EndDraw = Says("enddraw")
  End Function
  Public Function On_EndProcess(p) : On_EndProcess = Says("endprocess") : p.Abandon : End Function
  Public Function On_LastAccess(p) : On_LastAccess = Says("last") : End Function
End Class

Sub Run(refused)
  Dim page, script
  Set script = New Script
  script.Refused = refused
  Set page = Server.CreateObject("Mirt")
  page.AddScript script
  page.Name = "refusals"
  page.CommandName = "do"
  page.TemplateFolder = Server.MapPath("templates")
  page.TemplateExt = ".html"
  page.DefaultTemplate = "main"
  Response.Write refused & ": "
  On Error Resume Next
  page.Process
  If Err.Number <> 0 Then Response.Write Err.Description
  Response.Write vbLf
End Sub
Dim name
For Each name In Array("nothing", "first", "startprocess", "startcommand(Save)", "command", "endcommand", _
  "startdraw(main)", "drawtemplate", "draws", "notfound", "enddraw", "endprocess", "last")
  Run name
Next

Set t = Server.CreateObject("Mirt.TextTemplator")
Set t.Script = New Script
t.ProcessTemplateFile Server.MapPath("templates/plain.txt"), "utf-8"
Response.Write t.Flush & " " & t.Script.Who & vbLf
Set stream = Server.CreateObject("ADODB.Stream")
stream.Type = 2 : stream.Charset = "utf-8" : stream.Open
Set t.Stream = stream
t.Write "streamed"
stream.Position = 0
Response.Write stream.ReadText & " " & (t.Stream Is stream) & vbLf
Set util = Server.CreateObject("Mirt.Utility")
Response.Write AscW(util.HanToZen("A")) & " " & util.ZenToHan(ChrW(&HFF21))
%>
