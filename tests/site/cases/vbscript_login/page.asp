<%@ Language=VBScript %>
<%
Option Explicit
Response.Buffer = True
Response.Expires = -1
Dim user, password, wrong, users
Set users = Server.CreateObject("Scripting.Dictionary")
users("ann") = "Secret1"
users("bob") = "pass"

Function IsKnown(ByVal name, ByVal word)
  IsKnown = False
  name = LCase(Trim(name))
  If Not users.Exists(name) Then Exit Function
  If StrComp(users(name), word, vbBinaryCompare) <> 0 Then Exit Function
  IsKnown = True
End Function

If Request.ServerVariables("REQUEST_METHOD") = "POST" Then
  user = Request.Form("user")
  password = Request("password")
  If IsKnown(user, password) Then
    Session("user") = Trim(user)
    Session.Timeout = 30
    Response.Cookies("last") = user
    Response.Redirect "welcome.asp?from=" & Server.URLEncode(user)
  Else
    wrong = True
  End If
End If
%>never shown
