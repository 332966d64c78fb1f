<%@ Language="VBScript" %>
<% Option Explicit
' The page controller, driven from VBScript: events and mark functions in any letter case.
Dim page, log
Set page = Server.CreateObject("Mirt")
page.AddScript Me
page.TemplateFolder = Server.MapPath("templates")
page.TemplateExt = ".html"
page.DefaultTemplate = "page"
page.Process
Response.Write log

Sub on_startprocess(p)
  log = log & "start "
  p.SetView "Title", "A & B"
  p.SetView "Count", 3
End Sub
Function ONDRAW_Rows(p, texts)
  Dim i
  For i = 1 To CInt(texts(0))
    p.SetView "Row", i
    p.ProcessTemplate texts(1)
  Next
End Function
Function ON_STARTCOMMAND(p)
  log = log & "no command "
  ON_STARTCOMMAND = False
End Function
Sub OnCommand_(p)
  log = log & "never "
End Sub
Sub On_EndProcess(p)
  log = log & "end"
End Sub
%>
