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

}  // namespace
