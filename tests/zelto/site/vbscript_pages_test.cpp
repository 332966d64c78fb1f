// Pages in VBScript, from their text to the answer.
#include <gtest/gtest.h>

#include <string>

#include "zelto/site/page_run_fixture.h"

namespace {

struct Row {
  const char* script;  // of a page with nothing else
  const char* body;
};

class VbScriptPages : public test::PageRunFixture {
 protected:
  VbScriptPages() { options.debug = true; }

  std::string body_of(const std::string& page) { return run("<%@ Language=\"VBScript\" %>" + page, "").body; }

  // A page runs as a script first, and as a function from the second time on.
  template <std::size_t count>
  void expect(const Row (&rows)[count]) {
    for (const Row& row : rows) EXPECT_EQ(row.body, body_of(std::string("<%\n") + row.script + "\n%>")) << row.script;
  }

  // Of a page that fails: the log's line.
  std::string line_of(const std::string& page) {
    log.clear();
    body_of(page);
    return log.empty() ? "no error" : log[0];
  }
};

TEST_F(VbScriptPages, AssignAndCalculate) {
  constexpr Row kRows[] = {
      {"x = 1 + 2 * 3 : Response.Write x", "7"},
      {"X = 5 : response.WRITE x", "5"},
      {"Response.Write 7 \\ 2 & \" \" & 7 Mod 3 & \" \" & 2 ^ 10 & \" \" & 5 / 2 & \" \" & -2 ^ 2", "3 1 1024 2.5 -4"},
      {"Response.Write (1 = 1) & (Not True) & (5 And 3) & (1 Or 4) & (5 Xor 1)", "TrueFalse154"},
      {"Response.Write TypeName(1) & TypeName(100000) & TypeName(1.0) & TypeName(Null) & TypeName(Nothing)",
       "IntegerLongDoubleNullNothing"},
      {"If Null = 1 Then Response.Write \"a\" Else Response.Write \"b\"", "b"},
      {"If Not (Null = 1) Then Response.Write \"a\" Else Response.Write \"b\"", "b"},
      {"Response.Write 2147483647 + 1 & TypeName(2147483647 + 1)", "2147483648Double"},
      {"Const A = 3, B = \"x\" : Response.Write A & B & vbTab & &HFF", "3x\t255"},
      {"[a b] = 4 : Response.Write [a b] : [if] = 1 : Response.Write [if]", "41"},
      {"Response.Write \"a\" & _\n \"b\" & _\n \"c\"", "abc"},
      {"Dim var, function_, let_, eval_ : var = 1 : Response.Write var ' comment", "1"},
      {"Dim Error, Object, undefined : Error = 1 : undefined = 2 : Response.Write Error + undefined", "3"},
  };
  expect(kRows);
}

TEST_F(VbScriptPages, BranchAndLoop) {
  constexpr Row kRows[] = {
      {"If 1 > 2 Then\nx = 1\nElseIf 2 > 1 Then\nx = 2\nElse\nx = 3\nEnd If\nResponse.Write x", "2"},
      {"For i = 10 To 1 Step -3 : s = s & i & \" \" : Next : Response.Write s & i", "10 7 4 1 -2"},
      {"For i = 1 To 3 : For j = 1 To 3 : If j = 2 Then Exit For\ns = s & i & j & \" \"\nNext : Next : Response.Write "
       "s",
       "11 21 31 "},
      {"n = 3 : For i = 1 To n : n = 10 : c = c + 1 : Next : Response.Write c", "3"},
      {"For x = 0 To 1 Step 0.25 : s = s & x & \" \" : Next : Response.Write s", "0 0.25 0.5 0.75 1 "},
      {"For i = 1 To 5 : i = i + 1 : s = s & i : Next : Response.Write s", "246"},
      {"i = 3 : For i = 1 To i : s = s & i : Next : Response.Write s", "123"},
      {"a = 1 : b = 7 : c = 3 : For i = a To b Step c : s = s & i : Next : Response.Write s & i", "14710"},
      {"For d = #1/1/2000# To #1/2/2000# : s = s & TypeName(d) & Day(d) : Next : Response.Write s", "Date1Date2"},
      {"Do While i < 3 : i = i + 1 : Loop : Response.Write i", "3"},
      {"Do Until i = 3 : i = i + 1 : Loop : Response.Write i", "3"},
      {"Do : i = i + 1 : Loop While i < 3 : Response.Write i", "3"},
      {"Do : i = i + 1 : Loop Until i >= 3 : Response.Write i", "3"},
      {"Do\ni = i + 1\nIf i = 4 Then Exit Do\nLoop\nResponse.Write i", "4"},
      {"Do : While True : i = i + 1 : If i = 2 Then Exit Do\nWend : Loop : Response.Write i", "2"},
      {"For Each x In Array(1, \"b\", 3) : s = s & x & \";\" : Next : Response.Write s", "1;b;3;"},
      {"Select Case \"b\" : Case \"a\" : x = 1 : Case \"x\", \"b\" : x = 2 : Case Else : x = 3 : End Select\n"
       "Response.Write x",
       "2"},
      {"Set d = Server.CreateObject(\"Scripting.Dictionary\") : d.Add \"k\", 1 : d(\"l\") = 2\n"
       "For Each k In d : Response.Write k & d(k) : Next",
       "k1l2"},
      {"With Response : .Write \"a\" : .Write \"b\" : End With", "ab"},
  };
  expect(kRows);
}

TEST_F(VbScriptPages, PassParametersByReferenceUnlessTheyAreByValue) {
  constexpr Row kRows[] = {
      {"Sub S(a, b) : t = a : a = b : b = t : End Sub\nx = 1 : y = 2 : S x, y : Response.Write x & y", "21"},
      {"Sub S(a) : a = 5 : End Sub\nx = 1 : S (x) : Response.Write x : Call S(x) : Response.Write x", "15"},
      {"Sub S(ByVal a) : a = 5 : End Sub\nx = 1 : S x : Response.Write x", "1"},
      {"Sub S(a) : a = 5 : End Sub\nDim m(2) : S m(1) : Response.Write m(1)", "5"},
      {"Sub S(a) : T a : End Sub\nSub T(a) : a = 6 : End Sub\nx = 1 : S x : Response.Write x", "6"},
      {"Sub S(a) : a(0) = 5 : End Sub\nx = Array(1) : S x : Response.Write x(0)", "5"},
      {"Sub S(ByVal a) : a(0) = 5 : End Sub\nx = Array(1) : S x : Response.Write x(0)", "1"},
      {"x = Array(1) : y = x : y(0) = 2 : Response.Write x(0) & y(0)", "12"},
      {"Function F(n) : If n <= 1 Then F = 1 Else F = n * F(n - 1)\nEnd Function\nResponse.Write F(10)", "3628800"},
      {"Set f = GetRef(\"g\") : Response.Write f(2)\nFunction G(x) : G = x * 2 : End Function", "4"},
      {"Function F(a, b) : F = (TypeName(a)) : End Function\nResponse.Write F(, 1)", "Error"},
  };
  expect(kRows);
}

TEST_F(VbScriptPages, HaveArraysOfSeveralDimensions) {
  constexpr Row kRows[] = {
      {"Dim a(2, 3) : a(1, 2) = 5 : Response.Write a(1, 2) & UBound(a) & UBound(a, 2)", "523"},
      {"ReDim a(1) : a(0) = 1 : ReDim Preserve a(5) : Response.Write a(0) & UBound(a)", "15"},
      {"Dim a() : ReDim a(2) : Erase a : On Error Resume Next : Response.Write UBound(a) : Response.Write Err.Number",
       "9"},
      {"Dim a(1) : On Error Resume Next : a(2) = 1 : Response.Write Err.Description", "Subscript out of range"},
  };
  expect(kRows);
}

TEST_F(VbScriptPages, GoOnBehindWhatFails) {
  constexpr Row kRows[] = {
      {"On Error Resume Next : x = 1 / 0 : Response.Write Err.Number & Err.Description", "11Division by zero"},
      {"On Error Resume Next : If 1 / 0 Then Response.Write \"in\"", "in"},
      {"On Error Resume Next\nFor i = 1 To 1 / 0\nResponse.Write \"once\"\nNext", "once"},
      {"On Error Resume Next\nSelect Case 1 / 0\nCase 1\nResponse.Write \"first\"\nCase 2\nResponse.Write 2\nEnd "
       "Select",
       "first"},
      {"On Error Resume Next\nDo\nn = n + 1\nLoop While 1 / 0\nResponse.Write n", "1"},
      {"On Error Resume Next : nobody 1 : Response.Write Err.Number & Err.Description", "13Type mismatch: 'nobody'"},
      {"On Error Resume Next : Err.Raise 1234, \"me\", \"said\" : Response.Write Err.Number & Err.Source & "
       "Err.Description",
       "1234mesaid"},
      {"Sub S : x = 1 / 0 : Response.Write \"no\" : End Sub\nOn Error Resume Next : S : Response.Write Err.Number",
       "11"},
      {"On Error Resume Next : x = 1 / 0 : On Error GoTo 0 : Response.Write Err.Number", "0"},
      {"Sub S : On Error Resume Next : x = 1 / 0 : y = 2 : Response.Write y : End Sub\nS", "2"},
      {"On Error Resume Next : Set x = Server.CreateObject(\"No.Such\") : Response.Write (Err.Number <> 0)", "True"},
  };
  expect(kRows);
}

TEST_F(VbScriptPages, MakeInstancesOfClasses) {
  const std::string counter =
      "Class Counter\nPrivate n\nPublic Label\nPrivate Sub Class_Initialize : n = 10 : End Sub\n"
      "Public Default Function Value : Value = n : End Function\n"
      "Public Sub Add(by) : n = n + by : by = 0 : End Sub\n"
      "Public Property Get Items(i) : Items = n * i : End Property\n"
      "Public Property Let Items(i, v) : n = i * 100 + v : End Property\n"
      "Public Function Self : Set Self = Me : End Function\nEnd Class\n";
  constexpr Row kRows[] = {
      {"Set c = New Counter : b = 5 : c.ADD b : Response.Write c & \",\" & b", "15,0"},
      {"Set c = New Counter : c.Items(3) = 7 : Response.Write c.Items(2)", "614"},
      {"Set c = New Counter : c.Label = \"x\" : Response.Write c.label & TypeName(c)", "xCounter"},
      {"Set c = New Counter : Response.Write (c.Self Is c)", "True"},
      {"On Error Resume Next : Set c = New Counter : c.n = 1 : Response.Write Err.Number", "438"},
      {"With New Counter : .Add 1 : Response.Write .Value : End With", "11"},
      {"Set c = Nothing : On Error Resume Next : c.Add 1 : Response.Write Err.Number", "91"},
  };
  for (const Row& row : kRows) EXPECT_EQ(row.body, body_of("<% " + counter + row.script + " %>")) << row.script;
  EXPECT_EQ("ab", body_of("<% Class A\nSub Class_Terminate : Response.Write \"b\" : End Sub\nEnd Class\n"
                          "Set x = New A : Response.Write \"a\" %>"));
}

TEST_F(VbScriptPages, RunCodeThatTheyMake) {
  constexpr Row kRows[] = {
      {"x = 3 : Response.Write Eval(\"X * 2 = 6\")", "True"},
      {"Sub S(a) : y = 1 : Execute \"Y = y + 1 : A = 9\" : Response.Write y : End Sub\nq = 1 : S q : Response.Write q",
       "29"},
      {"ExecuteGlobal \"Function NewOne(v) : NewOne = v * 2 : End Function\" : Response.Write newone(4)", "8"},
      {"ExecuteGlobal \"Class K\" & vbLf & \"Public a\" & vbLf & \"End Class\"\nSet o = New k : o.A = 1 : "
       "Response.Write o.a",
       "1"},
      {"On Error Resume Next : Execute \"x = \" : Response.Write Err.Number & Err.Description",
       "1023Expected expression"},
  };
  expect(kRows);
}

TEST_F(VbScriptPages, HaveBlocksAcrossTheirText) {
  EXPECT_EQ("a1b a2b c", body_of("<% For i = 1 To 2 %>a<%= i %>b <% Next %>c"));
  EXPECT_EQ("yes", body_of("<% If True Then %>yes<% Else %>no<% End If %>"));
  EXPECT_EQ("two", body_of("<% Select Case 2 %>\n<% Case 1 %>one<% Case 2 %>two<% End Select %>"));
  EXPECT_EQ("<b>1</b><b>2</b>", body_of("<% Sub B(x) %><b><%= x %></b><% End Sub\nB 1 : B 2 %>"));
  EXPECT_EQ("5", body_of("<%= 2 + _\n 3 %>"));
  EXPECT_EQ("a", body_of("<% Response.Write \"a\" : Response.End : Response.Write \"b\" %>"));
  EXPECT_EQ("x", body_of("<% ' comment %>x"));
}

TEST_F(VbScriptPages, CallTheOtherLanguageAndAreCalled) {
  EXPECT_EQ("6", body_of("<script runat=\"server\" language=\"JScript\">function twice(x) { return x * 2; }</script>"
                         "<%= Twice(3) %>"));
  EXPECT_EQ("6", run("<script runat=\"server\" language=\"VBScript\">Function Twice(x) : Twice = x * 2 : End Function"
                     "</script><%= Twice(3) %>",
                     "")
                     .body);
  EXPECT_EQ("7",
            run("<script runat=\"server\" language=\"VBScript\">Function Inc(x) : x = x + 1 : Inc = x : End Function"
                "</script><% Response.Write(Inc(6)); %>",
                "")
                .body);
}

TEST_F(VbScriptPages, StepThroughWhatJavaScriptMakesOneByOne) {
  const std::string script =
      "<script runat=\"server\" language=\"JScript\">function squares() { return (function* () { "
      "for (let i = 1;; i++) yield i * i; })(); }\n"
      "function map() { return new Map([[\"a\", 1], [\"b\", 2]]).keys(); }\nfunction none() { return new Set(); }"
      "</script>";
  EXPECT_EQ("1,4,9,16,", body_of(script + "<% For Each n In squares() : Response.Write n & \",\" : If n > 9 Then Exit "
                                          "For\nNext %>"));
  EXPECT_EQ("a,b,", body_of(script + "<% For Each k In map() : Response.Write k & \",\" : Next %>"));
  EXPECT_EQ("", body_of(script + "<% For Each k In none() : Response.Write k & \",\" : Next %>"));
}

TEST_F(VbScriptPages, MayBeWhatASiteHasWithoutSayingSo) {
  options.language = zelto::pages::Language::vbscript;
  restart();
  EXPECT_EQ("3", run("<% x = 1 : Response.Write x + 2 %>", "").body);
  EXPECT_EQ("3", run("<%@ Language=JScript %><% var x = 1; Response.Write(x + 2); %>", "").body);
}

TEST_F(VbScriptPages, TellWhereTheyFail) {
  EXPECT_EQ("/page.asp:3: Expected expression (Microsoft VBScript compilation error, 0x800A03FF)",
            line_of("\n<%\nx = \n%>"));
  EXPECT_EQ("/page.asp:3: Division by zero (Microsoft VBScript runtime error, 0x800A000B)",
            line_of("\n<%\nx = 1 / 0\n%>"));
  EXPECT_EQ("/page.asp:4: Type mismatch (Microsoft VBScript runtime error, 0x800A000D)",
            line_of("\n<% Sub S(a)\nx = 1 + _\n  CInt(a)\nEnd Sub\nS \"a\" %>"));
  EXPECT_EQ("/page.asp:2: Variable is undefined: 'y' (Microsoft VBScript runtime error, 0x800A01F4)",
            line_of("<% Option Explicit\nDim x : x = 1 : y = 2 %>"));
  const std::string answer = body_of("<%\n  Response.Write \"a\" : x = 1 / 0\n%>");
  EXPECT_NE(answer.npos, answer.find("<dt>Column</dt><dd>30</dd>")) << answer;
}

}  // namespace
