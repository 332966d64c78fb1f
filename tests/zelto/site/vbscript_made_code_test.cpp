// What code that a script makes of text declares, and who finds it. Expected values are those of the public language
// reference: ExecuteGlobal declares for the whole script, Execute for the procedure that it stands in.
#include <gtest/gtest.h>

#include <string>

#include "zelto/site/page_run_fixture.h"

namespace {

struct Row {
  const char* script;  // of a page with nothing else
  const char* body;
};

class VbScriptMadeCode : public test::PageRunFixture {
 protected:
  std::string body_of(const std::string& script) {
    return run("<%@ Language=\"VBScript\" %><%\n" + script + "\n%>", "").body;
  }
  template <std::size_t count>
  void expect(const Row (&rows)[count]) {
    for (const Row& row : rows) EXPECT_EQ(row.body, body_of(row.script)) << row.script;
  }
};

TEST_F(VbScriptMadeCode, OfExecuteGlobalDeclaresForAllThatComesLater) {
  constexpr Row kRows[] = {
      {"Sub S : ExecuteGlobal \"Dim x : x = 5\" : End Sub\n"
       "Sub T : Response.Write Eval(\"x + 1\") : Execute \"Response.Write x\" : End Sub\nS : T",
       "65"},
      {"Sub S : ExecuteGlobal \"Dim x : x = 5\" : End Sub\n"
       "Sub T : Execute \"x = 6\" : End Sub\nS : T : Response.Write Eval(\"x\")",
       "6"},
      {"Sub S : ExecuteGlobal \"Function F(a) : F = a * 2 : End Function\" : End Sub\n"
       "Sub T : Response.Write Eval(\"f(4)\") : Response.Write F(5) : End Sub\nS : T",
       "810"},
      {"Sub S : ExecuteGlobal \"Sub F(a) : a = a + 1 : End Sub\" : End Sub\n"
       "Sub T : Dim n : n = 1 : Execute \"F n\" : Response.Write n : End Sub\nS : T",
       "2"},
      {"Sub S : ExecuteGlobal \"Class C : Public v : End Class\" : End Sub\n"
       "Sub T : Dim o : Set o = New C : o.v = 3 : Response.Write o.v : End Sub\nS : T",
       "3"},
      {"Sub S : ExecuteGlobal \"Class C : Public v : End Class\" : End Sub\n"
       "Sub T : Dim o : Set o = Eval(\"New c\") : o.v = 3 : Response.Write o.v : End Sub\nS : T",
       "3"},
      {"Sub S : ExecuteGlobal \"Const K = 7\" : End Sub\n"
       "Sub T : Response.Write K : Response.Write Eval(\"k\") : End Sub\nS : T",
       "77"},
      {"Option Explicit\nSub S : ExecuteGlobal \"Dim q : q = 7\" : End Sub\n"
       "Sub T : Response.Write q : q = 8 : Response.Write Eval(\"q\") : End Sub\nS : T",
       "78"},
      {"ExecuteGlobal \"Function G() : G = 3 : End Function\" : Set f = GetRef(\"g\") : Response.Write f()", "3"},
      {"ExecuteGlobal \"Sub A : B : End Sub\" : ExecuteGlobal \"Sub B : Response.Write 4 : End Sub\" : A", "4"},
      {"ExecuteGlobal \"Sub Up : n = n + 1 : End Sub\" : n = 3 : Up : Response.Write n", "4"},
  };
  expect(kRows);
}

TEST_F(VbScriptMadeCode, OfExecuteDeclaresForItsProcedure) {
  constexpr Row kRows[] = {
      {"Sub S : Execute \"Dim y : y = 5\" : Response.Write y : End Sub\nS : Response.Write TypeName(y)", "5Empty"},
      {"Sub S : Execute \"y = 5\" : Response.Write Eval(\"y\") : End Sub\nS : ExecuteGlobal \"Response.Write "
       "TypeName(y)\"",
       "5Empty"},
  };
  expect(kRows);
}

TEST_F(VbScriptMadeCode, OfOnePageIsNotThereInTheNext) {
  EXPECT_EQ("5", body_of("ExecuteGlobal \"Dim x : x = 5\" : Response.Write Eval(\"x\")"));
  EXPECT_EQ("Empty", body_of("Response.Write TypeName(Eval(\"x\"))"));
}

TEST_F(VbScriptMadeCode, FindsNoNameThatNobodyHasDeclaredWhereAllMustBe) {
  EXPECT_EQ("500", body_of("Option Explicit\nOn Error Resume Next\nExecuteGlobal \"Dim x\"\nx = y\n"
                           "Response.Write Err.Number"));
  EXPECT_EQ("0500", body_of("Option Explicit\nOn Error Resume Next\nExecuteGlobal \"Dim x\"\nx = 1\n"
                            "Response.Write Err.Number\ny = 2\nResponse.Write Err.Number"));
}

}  // namespace
