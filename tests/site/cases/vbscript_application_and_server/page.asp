<%@ Language="VBScript" CodePage="65001" LCID="1033" %>
<%
Option Explicit
Dim key, cookie
Application.Lock
Application("hits") = Application("hits") + 1
Application.UnLock
Response.Write Application("hits") & TypeName(Application("hits")) & " "
Application("list") = Array(1, "two")
Response.Write Application("list")(1) & " " & Application.Contents.Count & vbLf
Response.ContentType = "text/html"
Response.AddHeader "X-Test", "yes"
Response.Write Server.HTMLEncode("<a href=""x"">&</a>") & " " & Server.URLEncode("a b&c") & vbLf
Response.Write Request.ServerVariables("REQUEST_METHOD") & " " & Request.QueryString & " " & Request.QueryString("a").Count & vbLf
For Each key In Request.QueryString
  Response.Write key & "=" & Request.QueryString(key) & ";"
Next
Response.Write Request.QueryString("a")(2) & Request("b") & "[" & Request("c") & "]" & IsEmpty(Request("c")) & vbLf
Session("a") = 1 : Session("b") = Null
For Each key In Session.Contents
  Response.Write key & " "
Next
Session.Contents.Remove "a"
Response.Write IsEmpty(Session("a")) & IsNull(Session("b")) & vbLf
Response.Write LCase(Right(Server.MapPath("x.asp"), 5)) & " " & (Now() > #1/1/2020#) & " " & TypeName(Timer) & TypeName(Date) & vbLf
If Response.IsClientConnected Then Response.Write "here"
Response.Flush
Response.Clear
Response.End
Response.Write "never"
%>
