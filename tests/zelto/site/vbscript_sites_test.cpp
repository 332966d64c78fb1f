// Whole pages in VBScript of the kinds that old sites have.
#include <gtest/gtest.h>

#include <string>

#include "zelto/site/page_run_fixture.h"

namespace {

class VbScriptSites : public test::PageRunFixture {
 protected:
  VbScriptSites() { options.debug = true; }
  std::string body_of(const std::string& page) { return run(page, "").body; }
};

constexpr const char* kJson = R"vb(<%@ Language="VBScript" %>
<%
' JSON class
Class Json
  Private items
  Private Sub Class_Initialize : Set items = CreateObject("Scripting.Dictionary") : End Sub
  Public Default Property Get Item(key)
    If IsObject(items(key)) Then Set Item = items(key) Else Item = items(key)
  End Property
  Public Property Let Item(key, v) : items(key) = v : End Property
  Public Property Set Item(key, v) : Set items(key) = v : End Property
  Private Function Quoted(s)
    Dim i, c, made
    For i = 1 To Len(s)
      c = Mid(s, i, 1)
      Select Case c
        Case """", "\" : made = made & "\" & c
        Case vbLf : made = made & "\n"
        Case Else
          If AscW(c) < 32 Then made = made & "\u" & Right("000" & Hex(AscW(c)), 4) Else made = made & c
      End Select
    Next
    Quoted = """" & made & """"
  End Function
  Public Function Write(v)
    Dim i, parts
    If IsObject(v) Then
      Write = v.ToText
    ElseIf IsArray(v) Then
      ReDim parts(UBound(v))
      For i = 0 To UBound(v) : parts(i) = Write(v(i)) : Next
      Write = "[" & Join(parts, ",") & "]"
    Else
      Select Case VarType(v)
        Case vbNull, vbEmpty : Write = "null"
        Case vbBoolean : Write = LCase(CStr(v))
        Case vbString : Write = Quoted(v)
        Case vbDate : Write = """" & Year(v) & "-" & Right("0" & Month(v), 2) & "-" & Right("0" & Day(v), 2) & """"
        Case Else : Write = CStr(v)
      End Select
    End If
  End Function
  Public Function ToText()
    Dim k, made
    For Each k In items.Keys
      If made <> "" Then made = made & ","
      made = made & Quoted(k) & ":" & Write(items(k))
    Next
    ToText = "{" & made & "}"
  End Function
End Class
Dim j, inner
Set j = New Json : Set inner = New Json
inner("x") = 1.5 : inner("ok") = True
j("name") = "A ""b""" & vbLf : j("list") = Array(1, "two", Null, Array()) : Set j("inner") = inner : j("day") = DateSerial(2024, 2, 9)
Response.Write j.ToText & vbLf & j("inner")("x")
%>)vb";

TEST_F(VbScriptSites, WriteJsonByAClass) {
  EXPECT_EQ(R"({"name":"A \"b\"\n","list":[1,"two",null,[]],"inner":{"x":1.5,"ok":true},"day":"2024-02-09"})"
            "\n1.5",
            body_of(kJson));
}

constexpr const char* kUpload = R"vb(<%@ Language="VBScript" %>
<%
Function ByteText(s)
  Dim i
  For i = 1 To Len(s) : ByteText = ByteText & ChrB(Asc(Mid(s, i, 1))) : Next
End Function
Function TextOf(b)
  Dim i
  For i = 1 To LenB(b) : TextOf = TextOf & Chr(AscB(MidB(b, i, 1))) : Next
End Function
Dim crlf, body, bound, at, head, name, value, ends
crlf = ByteText(vbCrLf)
bound = ByteText("--XX")
body = bound & crlf & ByteText("Content-Disposition: form-data; name=""who""") & crlf & crlf & ByteText("Ann") & crlf & _
  bound & crlf & ByteText("Content-Disposition: form-data; name=""pic""") & crlf & crlf & ChrB(0) & ChrB(255) & ChrB(7) & crlf & bound & ByteText("--") & crlf
at = InStrB(1, body, bound)
Do Until at = InStrB(1, body, bound & ByteText("--"))
  at = at + LenB(bound) + 2
  head = TextOf(MidB(body, at, InStrB(at, body, crlf & crlf) - at))
  name = Mid(head, InStr(head, "name=""") + 6) : name = Left(name, Len(name) - 1)
  at = InStrB(at, body, crlf & crlf) + 4
  ends = InStrB(at, body, crlf & bound)
  value = MidB(body, at, ends - at)
  Response.Write name & "=" & LenB(value) & ":" & AscB(MidB(value, LenB(value), 1)) & ";"
  If name = "who" Then Response.Write TextOf(value) & ";"
  at = ends + 2
Loop
Response.BinaryWrite ByteText("Hi!!") : Response.BinaryWrite ByteText("Hey")
%>)vb";

TEST_F(VbScriptSites, TakeAnUploadApartByItsBytes) { EXPECT_EQ("who=3:110;Ann;pic=3:7;Hi!!Hey", body_of(kUpload)); }

constexpr const char* kShop = R"vb(<%@ Language="VBScript" %>
<%
Option Explicit
Dim basket, id, total, prices
Set prices = Server.CreateObject("Scripting.Dictionary")
prices.Add "apple", CCur("0.35") : prices.Add "pear", CCur("0.5")
If IsEmpty(Session("basket")) Then Session("basket") = Array()
Sub Add(what, count)
  Dim list, i
  list = Session("basket")
  For i = 0 To UBound(list)
    If list(i)(0) = what Then
      list(i) = Array(what, list(i)(1) + count)
      Session("basket") = list
      Exit Sub
    End If
  Next
  ReDim Preserve list(UBound(list) + 1)
  list(UBound(list)) = Array(what, count)
  Session("basket") = list
End Sub
Add "apple", 2 : Add "pear", 1 : Add "apple", 3
For Each id In Session("basket")
  Response.Write id(0) & " " & id(1) & " " & FormatNumber(prices(id(0)) * id(1), 2) & vbLf
  total = total + prices(id(0)) * id(1)
Next
Response.Write FormatCurrency(total) & " " & TypeName(total) & vbLf
Dim page, pages, size : size = 3
Dim all : all = Split("a,b,c,d,e,f,g", ",")
pages = -Int(-(UBound(all) + 1) / size)
page = 3
For id = (page - 1) * size To page * size - 1
  If id > UBound(all) Then Exit For
  Response.Write all(id)
Next
Response.Write " of " & pages & vbLf
If Request.QueryString("user") = "" Then Response.Write "login" & vbLf
With prices
  .Item("fig") = 2
  Response.Write .Count & .Exists("fig") & vbLf
End With
Response.Write DateDiff("d", #1/31/2024#, DateAdd("m", 1, #1/31/2024#)) & MonthName(Month(#3/5/2024#), True) & vbLf
Function Apply(f, v) : Apply = f(v) : End Function
Function Twice(v) : Twice = v * 2 : End Function
Response.Write Apply(GetRef("twice"), 21) & vbLf
Response.Write IsNumeric("12a") & IsNumeric("1,200") & CStr(CDbl("1,200")) & vbLf
Dim m(2, 1) : m(2, 1) = "z" : Response.Write UBound(m) & UBound(m, 2) & m(2, 1) & vbLf
Response.Write Replace("<a & b>", "&", "&amp;") & Server.HTMLEncode("<") & vbLf
Response.Cookies("c")("k") = "v" : Response.Cookies("c").Expires = Now + 1
Application.Lock : Application("n") = Application("n") + 1 : Application.Unlock
Response.Write Application("n")
%>)vb";

TEST_F(VbScriptSites, KeepABasketInTheSession) {
  EXPECT_EQ(
      "apple 5 1.75\npear 1 0.50\n$2.25 Currency\ng of 3\nlogin\n3True\n29Mar\n42\nFalseTrue1200\n21z\n"
      "<a &amp; b>&lt;\n1",
      body_of(kShop));
}

}  // namespace
