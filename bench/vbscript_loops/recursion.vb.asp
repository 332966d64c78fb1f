<%@ Language="VBScript" %><%
Function Fib(n)
  If n < 2 Then
    Fib = n
  Else
    Fib = Fib(n - 1) + Fib(n - 2)
  End If
End Function
Response.Write Fib(25)
%>
