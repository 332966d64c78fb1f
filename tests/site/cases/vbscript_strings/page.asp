<%@ Language="VBScript" %>
<%
' Text functions, as pages put them together.
Sub P(x)
  If IsNull(x) Then Response.Write "Null|" Else Response.Write x & "|"
End Sub
P Left("Hello", 2) : P Right("Hello", 3) : P Mid("Hello", 2, 3) : P Mid("Hello", 4) : P Mid("Hello", 9)
P Len("") : P InStr("banana", "an") : P InStr(3, "banana", "an") : P InStr(1, "Banana", "b", 1) : P InStrRev("banana", "an")
Response.Write vbLf
P Replace("banana", "a", "o") : P Replace("banana", "a", "o", 3) : P Replace("banana", "a", "", 1, 2) : P StrReverse("abc")
P UCase("straße ä") : P LCase("ÄB") : P Trim("  x ") & "." : P LTrim("  x ") : P RTrim(" x  ") & "." : P Space(3) & "."
Response.Write vbLf
P String(3, "ab") : P String(2, 65) : P Join(Split("a,b,,c", ","), ";") : P UBound(Split("", ",")) : P UBound(Split("abc", "")) : P Join(Split("a-b-c", "-", 2), "+")
P Join(Filter(Array("Apple", "Banana", "Cherry"), "an"), ",") : P Join(Filter(Array("Apple", "Banana"), "A", False, 0), ",") : P StrComp("a", "B") : P StrComp("a", "B", 1) : P StrComp("a", "A", 1)
Response.Write vbLf
P Asc("A") : P Chr(66) : P AscW("€") : P ChrW(8364) : P Hex(255) : P Hex(-1) : P Oct(8) : P CStr(1 = 1) : P "a" & 1 & Empty & "b" & Null & "c"
Response.Write vbLf
P "10" + 5 : P "10" & 5 : P "1" + "2" : P 5 - "2" : P "3" * "4" : P "abc" < "abd" : P "a" < "B" : P "10" < 9 : P Empty & "x" : P Null + 1 : P Null & Null
Response.Write vbLf
P LCase(Null) : P Len(Null) : P InStr("abc", "") : P InStr("", "a") : P InStr(4, "abc", "a") : P Escape("a b/ü€") : P Unescape("%u20AC%20x") : P "say ""hi"""
Response.Write vbLf
P LenB("ab") : P LenB(ChrB(65)) : P AscB(MidB("AB", 3, 1)) : P Replace("aXbxc", "x", "-", 1, -1, vbTextCompare) : P InStr("x=1&y=2", "&") : P TypeName(Split("a b")) : P VarType(Split("a b"))
%>
