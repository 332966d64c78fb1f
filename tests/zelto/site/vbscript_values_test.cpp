// What compiled scripts do with values of all kinds where they have a short way for numbers, texts and arrays.
// Expected values are those of the public language reference, or calculated by hand.
#include <gtest/gtest.h>

#include <string>

#include "zelto/site/page_run_fixture.h"

namespace {

struct Row {
  const char* script;  // of a page with nothing else
  const char* body;
};

class VbScriptValues : public test::PageRunFixture {
 protected:
  std::string body_of(const std::string& script) {
    return run("<%@ Language=\"VBScript\" %><%\nOn Error Resume Next\n" + script +
                   "\nIf Err.Number <> 0 Then Response.Write \"error \" & Err.Number\n%>",
               "")
        .body;
  }
  template <std::size_t count>
  void expect(const Row (&rows)[count]) {
    for (const Row& row : rows) EXPECT_EQ(row.body, body_of(row.script)) << row.script;
  }
};

TEST_F(VbScriptValues, CalculateInPlace) {
  constexpr Row kRows[] = {
      {"x = 5 : Response.Write (x + 1) & TypeName(x + 1)", "6Integer"},
      {"x = \"5\" : Response.Write (x + 1) & TypeName(x + 1)", "6Double"},
      {"x = Null : Response.Write TypeName(x + 1)", "Null"},
      {"Response.Write x + 1", "1"},
      {"x = True : Response.Write x + 1", "0"},
      {"x = 2147483647 : Response.Write (x + 1) & TypeName(x + 1)", "2147483648Double"},
      {"x = -2147483647 : Response.Write (x - 2) & TypeName(x - 2)", "-2147483649Double"},
      {"x = 0.5 : y = 0.5 : Response.Write (x + y) & TypeName(x + y)", "1Double"},
      {"x = 3 / 3 : Response.Write (x + 1) & TypeName(x + 1)", "2Double"},
      {"x = 3 / 3 : Response.Write (x - 1) & TypeName(x * 4)", "0Double"},
      {"x = CByte(5) : Response.Write TypeName(x + x)", "Byte"},
      {"x = CCur(1.5) : Response.Write (x + 1) & TypeName(x + 1)", "2.5Currency"},
      {"x = CSng(1.5) : Response.Write (x * 2) & TypeName(x * 2)", "3Single"},
      {"x = CDate(1) : Response.Write TypeName(x + 1)", "Date"},
      {"x = \"a\" : y = \"b\" : Response.Write x + y", "ab"},
      {"x = \"a\" : Response.Write x + 1", "error 13"},
      {"Set x = Nothing : Response.Write x + 1", "error 91"},
      {"x = 7.5 : Response.Write (x Mod 5) & \" \" & (x \\ 2)", "3 4"},
      {"x = -7 : Response.Write (x Mod 5) & \" \" & (x \\ 2)", "-2 -3"},
      {"x = \"17\" : Response.Write (x Mod 5) & \" \" & (x \\ 5)", "2 3"},
      {"x = 7 : y = 0 : Response.Write x Mod y", "error 11"},
      {"x = 1 : y = 0 : Response.Write x / y", "error 11"},
      {"x = 0 : y = 0 : Response.Write x / y", "error 6"},
      {"x = 4 : y = 2 : Response.Write TypeName(x / y)", "Double"},
      {"x = 1E308 : Response.Write x * 10", "error 6"},
  };
  expect(kRows);
}

TEST_F(VbScriptValues, CompareInPlace) {
  constexpr Row kRows[] = {
      {"x = 5 : Response.Write (x = 5) & (x <> 5) & (x < 6) & (x >= 6)", "TrueFalseTrueFalse"},
      {"x = \"5\" : Response.Write (x = 5) & (x < 10)", "TrueTrue"},
      {"x = \"5\" : y = 5 : Response.Write (x = y) & (x > y)", "FalseTrue"},
      {"x = 5 : Response.Write (x = \"5\") & (x <> \"5\")", "TrueFalse"},
      {"x = Null : Response.Write TypeName(x = 1) & TypeName(x = \"a\")", "NullNull"},
      {"Response.Write (x = 0) & (x = \"\")", "TrueTrue"},
      {"x = True : Response.Write (x = -1)", "True"},
      {"x = CByte(5) : Response.Write (x = 5) & (x < 6)", "TrueTrue"},
      {"x = \"a\" : Response.Write x = 5", "error 13"},
      {"x = \"B\" : Response.Write (x = \"b\") & (x = \"B\")", "FalseTrue"},
      {"x = \"5\" : Select Case x : Case 4 : r = 1 : Case 5 : r = 2 : End Select : Response.Write r", "2"},
      {"x = 5 : Select Case x : Case \"4\" : r = 1 : Case \"5\" : r = 2 : End Select : Response.Write r", "2"},
      {"x = Null : Select Case x : Case 1 : r = 1 : Case Else : r = 2 : End Select : Response.Write r", "2"},
      {"Select Case x : Case \"a\" : r = 1 : Case \"\" : r = 2 : End Select : Response.Write r", "2"},
      {"x = CCur(2) : Select Case x : Case 1 : r = 1 : Case 2, 3 : r = 2 : End Select : Response.Write r", "2"},
  };
  expect(kRows);
}

TEST_F(VbScriptValues, FindElements) {
  constexpr Row kRows[] = {
      {"Dim a(3) : a(1) = 5 : Response.Write a(1) & TypeName(a(0)) & UBound(a)", "5Empty3"},
      {"Dim a(3) : a(\"1\") = 5 : a(2.5) = 6 : Response.Write a(1) & a(2)", "56"},
      {"Dim a(3) : Response.Write a(4)", "error 9"},
      {"Dim a(3) : a(-1) = 1", "error 9"},
      {"Dim a(3) : Response.Write a(1, 1)", "error 9"},
      {"Dim a : Response.Write a(1)", "error 13"},
      {"Dim a() : Response.Write a(0)", "error 9"},
      {"Dim a(2) : b = Array(1, 2) : a(0) = b : b(0) = 9 : Response.Write a(0)(0)", "1"},
      {"Dim m(2, 3) : m(2, 3) = 5 : m(0, 1) = 6 : For Each e In m : s = s & e & \",\" : Next : Response.Write s",
       ",,,6,,,,,,,,5,"},
      {"Dim m(2, 3) : Response.Write m(3, 0)", "error 9"},
      {"Dim m(2, 3) : m(0, 4) = 1", "error 9"},
      {"Dim m(2, 3) : Response.Write m(0)", "error 9"},
      {"Dim m(2, 3) : m(\"1\", 1.5) = 4 : Response.Write m(1, 2)", "4"},
      {"ReDim m(1, 1) : m(1, 1) = 3 : ReDim Preserve m(1, 4) : m(1, 4) = 5 : Response.Write m(1, 1) & m(1, 4)", "35"},
      {"ReDim m(1, 1) : ReDim m(5) : m(5) = 1 : Response.Write m(5) : Response.Write m(1, 1)", "1error 9"},
      {"ReDim m(1, 1) : Erase m : m(0, 0) = 1", "error 9"},
      {"Dim c(1, 1, 1) : c(1, 0, 1) = 7 : Response.Write c(1, 0, 1) & c(1, 1, 1)", "7"},
      {"Dim a(70000) : a(70000) = 1 : Response.Write a(70000) & TypeName(a(69999))", "1Empty"},
      {"Set d = CreateObject(\"Scripting.Dictionary\") : d(1) = 2 : Response.Write d(1)", "2"},
  };
  expect(kRows);
}

TEST_F(VbScriptValues, CutTextThatWasJoined) {
  constexpr Row kRows[] = {
      {"For i = 1 To 9 : s = s & i : Next : Response.Write Mid(s, 3, 1) & Mid(s, 8) & Left(s, 2) & Right(s, 2)",
       "3891289"},
      {"s = \"abc\" : Response.Write Mid(s, 4, 1) & Mid(s, 9) & Mid(s, 3, 5) & Left(s, 0) & Right(s, 0)", "c"},
      {"Response.Write Mid(\"abc\", 0, 1)", "error 5"},
      {"Response.Write Mid(12345, 2, 1) & Mid(\"abc\", \"2\", \"1\")", "2b"},
      {"Response.Write TypeName(Mid(Null, 1, 1))", "Null"},
  };
  expect(kRows);
}

// Loops may keep a Double that is a whole number as any other number, and yet it is told from an Integer.
TEST_F(VbScriptValues, TellDoublesThatLoopsMake) {
  constexpr Row kRows[] = {
      {"y = 1 : t = TypeName(y) : For i = 1 To 2 : y = y + i / 2 : t = t & y & TypeName(y) : Next : Response.Write t",
       "Integer1.5Double2.5Double"},
      {"For i = 1 To 3 : y = 4 / 2 : Next : Response.Write y & TypeName(y) & VarType(y)", "2Double5"},
      {"For i = 1 To 2 : y = i / 1 : z = y + 1 : Next : Response.Write z & TypeName(z) & TypeName(y - 2)",
       "3DoubleDouble"},
      {"For i = 1 To 2 : y = i / 1 : z = y : y = 7 : Next : Response.Write TypeName(z) & TypeName(y)", "DoubleInteger"},
      {"For i = 1 To 4 : If i Mod 2 = 0 Then\ny = i / 2\nElse\ny = i\nEnd If : t = t & y & TypeName(y) : Next\n"
       "Response.Write t",
       "1Integer1Double3Integer2Double"},
      {"For i = 1 To 2 : t = t & TypeName(y) : y = i / 1 : Next : Response.Write t & TypeName(y)", "EmptyDoubleDouble"},
      {"For i = 1 To 1 : y = 5 / 1 : y = \"a\" : t = TypeName(y) : y = y & 1 : Next : Response.Write t & y",
       "Stringa1"},
      {"For i = 1 To 1 : y = 6 / 2 : a = Array(y, y * 2) : Next : Response.Write TypeName(a(0)) & a(1) & "
       "TypeName(a(1))",
       "Double6Double"},
      {"For y = 1 To 2 : y = y + 2 / 2 : Next : Response.Write y & TypeName(y)", "3Double"},
      {"For y = 1 To 9 : y = CCur(y) : Next : Response.Write y & TypeName(y)", "10Currency"},
      {"For y = 1 To 9 : y = \"4\" : If n = 2 Then Exit For\nn = n + 1 : Next : Response.Write n & y", "24"},
      {"For y = 1 To 9 Step 2 : y = CDate(y) : Next : Response.Write TypeName(y)", "Date"},
      {"a = Array(1, 2, 3) : For i = 0 To 2 : y = y + a(i) : Next : Response.Write y & TypeName(y)", "6Integer"},
      {"a = Array(1, 4 / 2, 3) : For i = 0 To 2 : y = y + a(i) : t = t & y & TypeName(y) : Next : Response.Write t",
       "1Integer3Double6Double"},
      {"a = Array(0.5, 1.5) : For i = 0 To 1 : y = a(i) - y : Next : Response.Write y & TypeName(y)", "1Double"},
      {"a = Array(5, 6, 7) : b = Array(4 / 2, 2 / 2, 0) : For i = 0 To 2 : y = y + a(b(i)) : Next\n"
       "Response.Write y & TypeName(y)",
       "18Integer"},
      {"a = Array(\"x\", \"y\") : For i = 0 To 1 : y = y + a(i) : Next : Response.Write y & TypeName(y)", "xyString"},
      {"a = Array(1, CCur(2)) : For i = 0 To 1 : y = y + a(i) : Next : Response.Write y & TypeName(y)", "3Currency"},
      {"a = Array(1, Null, 2) : For i = 0 To 2 : y = y + a(i) : Next : Response.Write TypeName(y)", "Null"},
      {"a = Array(1, Empty, True) : For i = 0 To 2 : y = y + a(i) : Next : Response.Write y & TypeName(y)", "0Integer"},
      {"a = Array(1000000000, 2000000000) : For i = 0 To 1 : y = y + a(i) : Next : Response.Write y & TypeName(y)",
       "3000000000Double"},
      {"Dim m(1, 1) : m(0, 1) = 6 / 2 : m(1, 1) = 4\nFor i = 0 To 1 : y = y + m(i, 1) : Next\n"
       "Response.Write y & TypeName(y)",
       "7Double"},
      {"a = Array(1, 2) : For i = 0 To 2 : y = y + a(i) : Next : Response.Write y", "3error 9"},
      {"Set d = CreateObject(\"Scripting.Dictionary\") : d(0) = 4 : d(1) = 1 / 2 + 1 / 2\n"
       "For i = 0 To 1 : y = y + d(i) : Next : Response.Write y & TypeName(y)",
       "5Double"},
      {"For i = 1 To 2 : y = 2.0 : y = y + i : Next : For i = 1 To 1 : y = y / 1 : Next : Response.Write y & "
       "TypeName(y)",
       "4Double"},
      {"For i = 1 To 1 : y = i / 1 : y = Null : z = y + 1 : Next : Response.Write TypeName(y) & TypeName(z)",
       "NullNull"},
      {"For i = 1 To 1 : y = \"3\" / 1 : Next : Response.Write y & TypeName(y)", "3Double"},
      {"x = \"1.5\" : For i = 1 To 2 : y = y + x / 2 : Next : Response.Write y & TypeName(y)", "1.5Double"},
      {"x = CCur(3) : For i = 1 To 2 : y = x * 2 + i / 1 : Next : Response.Write y & TypeName(y)", "8Currency"},
      {"x = CSng(3) : For i = 1 To 1 : y = x / 2 : Next : Response.Write y & TypeName(y)", "1.5Single"},
      {"x = CDate(3) : For i = 1 To 1 : y = x + i / 1 : Next : Response.Write TypeName(y)", "Date"},
      {"x = CLng(3) : For i = 1 To 1 : y = i / 1 : y = x : Next : Response.Write y & TypeName(y)", "3Long"},
      {"x = True : For i = 1 To 1 : y = x + i / 2 : Next : Response.Write y", "-0.5"},
      {"x = 1 : For i = 1 To 1 : y = i / 1 : y = x + 2147483647 : Next : Response.Write y & TypeName(y)",
       "2147483648Double"},
      {"For i = 1 To 1 : y = i / 1 : y = 2147483647 : y = y - 1 : Next : Response.Write y & TypeName(y)",
       "2147483646Long"},
      {"For i = 1 To 1 : y = 0.5 : z = y : y = y + 0.5 : x = i / 1 : Next : Response.Write y & TypeName(y)", "1Double"},
      {"Dim a(2) : a(1) = 4 : a(2) = 6 / 3 : For i = 1 To 2 : y = y + a(i) / 2 : Next : Response.Write y & TypeName(y)",
       "3Double"},
      {"Dim m(1, 1) : m(1, 0) = 3 : For i = 1 To 1 : y = m(i, 0) ^ 2 + 1 : Next : Response.Write y & TypeName(y)",
       "10Double"},
      {"For i = 1 To 1 : y = Sqr((i + 2) * (i + 2) + (i + 3) ^ 2) : Next : Response.Write y & TypeName(y)", "5Double"},
      {"For i = 1 To 1 : y = CDbl(i) : Next : Response.Write y & TypeName(y)", "1Double"},
      {"For i = 1 To 1 : y = -(i / 1) : Next : Response.Write y & TypeName(y)", "-1Double"},
      {"Const kRate = 0.5 : For i = 4 To 4 : y = i * kRate : Next : Response.Write y & TypeName(y)", "2Double"},
      {"Do While y < 2 : y = y + 1 / 2 : Loop : Response.Write y & TypeName(y) & (y = 2) & (y > 1)", "2DoubleTrueTrue"},
      {"For i = 1 To 1 : y = 4 / 2 : Next : Select Case y : Case 2 : Response.Write \"two\" & (y Mod 2) & (y \\ 2) : "
       "End "
       "Select",
       "two01"},
      {"For i = 9 To 9 : y = 0.5 * (i Mod 5) : z = (i \\ 2) * 1.5 : Next : Response.Write y & TypeName(y) & z & "
       "TypeName(z)",
       "2Double6Double"},
      {"x = 9.5 : For i = 1 To 1 : y = 0.5 * (x Mod 4) : z = (x \\ 4) / 2 : Next : Response.Write y & \" \" & z",
       "1 1"},
      {"Response.Write TypeName((4 / 2 + 1) * 2) & ((4 / 2 + 1) * 2)", "Double6"},
      {"Response.Write -(4 / 2) ^ 2 & TypeName(2 + 3 * 1.0)", "-4Double"},
  };
  expect(kRows);
}

TEST_F(VbScriptValues, FailInLoopsOfDoublesAsAnywhere) {
  constexpr Row kRows[] = {
      {"For i = 0 To 0 : y = 1 : y = 1 / i : Next : Response.Write y & TypeName(y)", "1Integererror 11"},
      {"For i = 0 To 0 : y = 2 / 1 : y = 1 + i / i : Next : Response.Write y & TypeName(y)", "2Doubleerror 6"},
      {"x = 1E308 : For i = 1 To 1 : y = x * 10 / 2 : Next : Response.Write TypeName(y)", "Emptyerror 6"},
      {"x = 1E308 : For i = 1 To 1 : y = 1 / (x * 10) : Next : Response.Write TypeName(y)", "Emptyerror 6"},
      {"x = 0 : For i = 1 To 1 : y = 1 / (i / x) : Next : Response.Write TypeName(y)", "Emptyerror 11"},
      {"x = 1E308 : For i = 1 To 1 : y = 2 ^ -(x * 10) : Next : Response.Write TypeName(y)", "Emptyerror 6"},
      {"x = 0 : For i = 1 To 1 : y = x ^ -1 : Next : Response.Write TypeName(y)", "Emptyerror 5"},
      {"For i = 1 To 1 : y = Sqr(-i) : Next", "error 5"},
      {"For i = 0 To 0 : y = Log(i) : Next", "error 5"},
      {"x = \"a\" : For i = 1 To 1 : y = i / 1 : y = x / 2 : Next : Response.Write y & TypeName(y)", "1Doubleerror 13"},
      {"Dim a(2) : For i = 3 To 3 : y = a(i) / 2 : Next", "error 9"},
      {"Set x = Nothing : For i = 1 To 1 : y = x / 2 : Next", "error 91"},
  };
  expect(kRows);
}

// What sees a variable otherwise than by its name in the procedure.
TEST_F(VbScriptValues, ShowDoublesThatLoopsMake) {
  constexpr Row kRows[] = {
      {"For i = 1 To 1 : y = 4 / 2 : Kind y : Next : Response.Write y & TypeName(y)\n"
       "Sub Kind(v) : Response.Write TypeName(v) : v = 7 : End Sub",
       "Double7Integer"},
      {"For i = 1 To 1 : y = 4 / 2 : Kind (y) : Next\nSub Kind(v) : Response.Write TypeName(v) : End Sub", "Double"},
      {"For i = 1 To 1 : y = 4 / 2 : Show : Next : Response.Write TypeName(y)\n"
       "Sub Show : Response.Write TypeName(y) : y = 1 : End Sub",
       "DoubleInteger"},
      {"For i = 1 To 1 : y = 4 / 2 : Execute \"z = TypeName(y)\" : Next : Response.Write z & Eval(\"TypeName(y)\")",
       "DoubleDouble"},
      {"Response.Write TypeName(Half(4)) & TypeName(Sum(2))\n"
       "Function Half(n) : For i = 1 To 1 : y = n / 2 : Next : Half = y : End Function\n"
       "Function Sum(ByVal n) : For i = 1 To 2 : n = n + i / 1 : Next : Sum = n : End Function",
       "DoubleDouble"},
      {"y = 1 : Change y : Response.Write y & TypeName(y)\nSub Change(v) : For i = 1 To 1 : v = v + 4 / 4 : Next : End "
       "Sub",
       "2Double"},
      {"Set d = CreateObject(\"Scripting.Dictionary\") : For i = 1 To 1 : y = 4 / 2 : d(\"k\") = y : d.Add y, y : "
       "Next\n"
       "For Each k In d : Response.Write TypeName(k) & TypeName(d(k)) : Next",
       "StringDoubleDoubleDouble"},
      {"Class C : Public v : Public Sub Run(n) : For i = 1 To 2 : s = s + n / 2 : v = s : Next : End Sub : End Class\n"
       "Set c1 = New C : c1.Run 2 : Response.Write c1.v & TypeName(c1.v)",
       "2Double"},
      {"For i = 1 To 1 : y = 4 / 2 : ReDim y(1) : y(1) = 3 : Next : Response.Write y(1) & IsArray(y)", "3True"},
      {"For i = 1 To 1 : y = 4 / 2 : Set y = New C : Next : Response.Write TypeName(y)\nClass C : End Class", "C"},
  };
  expect(kRows);
}

}  // namespace
