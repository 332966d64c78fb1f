<%@ Language="VBScript" %><%
Dim i, k, n, x
For i = 1000 To 2 Step -2
  For k = 1 To i Step 3 : n = (n + k * i) Mod 65521 : Next
Next
For x = 0 To 5000 Step 0.5
  If x > 1000 Then n = n + 1
Next
Response.Write n
%>
