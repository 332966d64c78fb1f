<%@ Language="VBScript" %><%
Function Primes(last)
  Dim composite(), i, k, n
  ReDim composite(last)
  For i = 0 To last : composite(i) = 0 : Next
  i = 2
  Do While i <= last
    If composite(i) = 0 Then
      n = n + 1
      k = i + i
      Do While k <= last
        composite(k) = 1
        k = k + i
      Loop
    End If
    i = i + 1
  Loop
  Primes = n
End Function
Response.Write Primes(50000)
%>
