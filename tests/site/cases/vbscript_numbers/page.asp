<%@ Language="VBScript" LCID="1033" %>
<%
' Numbers: kinds, rounding, formats.
Sub P(x)
  If IsNull(x) Then Response.Write "Null|" Else Response.Write x & "|"
End Sub
Sub K(x) : Response.Write TypeName(x) & "=" & x & "|" : End Sub
K 1 : K 32767 + 1 : K 2147483647 + 1 : K 7 / 2 : K 6 / 2 : K 7 \ 2 : K -7 \ 2 : K 7 Mod 3 : K -7 Mod 3 : K 7.5 Mod 3 : K 2 ^ 10 : K -2 ^ 2
Response.Write vbLf
K CInt(2.5) : K CInt(3.5) : K CInt(-2.5) : K CLng("1234567") : K CByte(200) : K CSng(1.1) : K CDbl("1.5") : K CCur("12.34567") : K CBool("True") : K CBool(2) : K CStr(1.50) : K Round(2.5) : K Round(1.2345, 3)
Response.Write vbLf
K Int(-2.5) : K Fix(-2.5) : K Abs(-3) : K Sgn(-0.1) : K Sqr(16) : P 0.1 + 0.2 : P 1 / 3 : P 1E+15 : P 1E+16 : P 123456789012345678 : K &HFF : K &HFFFF : K &H10000 : K &O17
Response.Write vbLf
P True + True : P Not 5 : P 5 And 3 : P 5 Or 3 : P 5 Xor 3 : P True And Null : P False And Null : P True Or Null : P 5 Eqv 3 : P 5 Imp 3 : P Not Null : P -1 = (1 = 1) : P 3 > 2 > 1
Response.Write vbLf
P FormatNumber(1234.567) : P FormatNumber(-0.5, 1, 0) : P FormatNumber(-12, 2, -1, -1) : P FormatNumber(1234567, 0, , , 0) : P FormatCurrency(1234.5) : P FormatPercent(0.1234, 1) : P FormatPercent(2)
Response.Write vbLf
P CLng(2147483647) : P 2 + 3 * 4 ^ 2 / 8 Mod 5 : P 2 ^ 3 ^ 2 : P -3 Mod 2 : P 10 - 2 - 3 : P 100 / 10 / 5 : P 17 \ 5 \ 2 : P "2" ^ 2 : P 1 & 2 + 3 : P Not 1 = 2
Response.Write vbLf
P IsNumeric("1e3") : P IsNumeric("12a") : P IsNumeric("") : P IsNumeric(Empty) : P IsNumeric(Null) : P IsNumeric("$1,234.50") : P CDbl("1,234.5") : P Val1("&H1F") : P Rnd(-1) = Rnd(-1)
Function Val1(s) : Val1 = CLng(s) : End Function
%>
