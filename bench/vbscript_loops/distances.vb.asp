<%@ Language="VBScript" %><%
Function Distance(x1, y1, x2, y2)
  Distance = Sqr((x1 - x2) ^ 2 + (y1 - y2) ^ 2)
End Function
Dim i, x, y, total, far
For i = 1 To 50000
  x = (i Mod 100) * 0.5
  y = (i Mod 70) * 1.5
  total = total + Distance(x, y, 25, 50.5)
  If Distance(x, y, 0, 0) > 60 Then far = far + 1
Next
Response.Write Int(total) & " " & far
%>
