<%@ Language="VBScript" %><%
Dim i, n, kind
For i = 1 To 200000
  Select Case i Mod 7
    Case 0 : kind = "zero"
    Case 1, 2 : kind = "low"
    Case 3 : kind = "middle"
    Case Else : kind = "high"
  End Select
  Select Case kind
    Case "zero" : n = n + 1
    Case "low" : n = n + 2
    Case "middle" : n = n + 3
    Case Else : n = n + 4
  End Select
Next
Response.Write n
%>
