<%@ Language="VBScript" %><%
Dim composite(50000), i, k, n
For i = 0 To 50000 : composite(i) = False : Next
For i = 2 To 50000
  If Not composite(i) Then
    n = n + 1
    For k = i + i To 50000 Step i : composite(k) = True : Next
  End If
Next
Response.Write n
%>
