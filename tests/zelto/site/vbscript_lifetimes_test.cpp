// When Class_Terminate runs. Expected values follow from the public language reference, by which an instance ends when
// the last reference to it goes: what only an expression had goes with its statement.
#include <gtest/gtest.h>

#include <string>

#include "zelto/site/page_run_fixture.h"

namespace {

struct Row {
  const char* script;
  const char* body;
};

// "+1" is what an instance says that is made, "-1" one that ends.
constexpr const char* kClass = R"(<%@ Language="VBScript" %><%
Class C
  Public N, A, B, L(2)
  Private Secret
  Private Sub Class_Terminate : Response.Write "-" & N : N = "gone" & N : End Sub
  Public Function Self : Set Self = Me : End Function
  Public Function Child(n) : Set A = Made(n) : Set Child = A : End Function
  Public Sub Hide(o) : Set Secret = o : End Sub
  Public Sub Take(v) : W "take" & v : End Sub
  Public Sub Fail : Err.Raise 1000, "C", "failed" : End Sub
  Public Property Set Other(o) : Set B = o : End Property
  Public Property Get Other : Set Other = B : End Property
  Public Default Function Value : Value = N : End Function
End Class
Function Made(n)
  Dim o
  Set o = New C
  o.N = n
  Response.Write "+" & n
  Set Made = o
End Function
Sub W(text) : Response.Write " " & text & " " : End Sub
)";

class VbScriptLifetimes : public test::PageRunFixture {
 protected:
  std::string body_of(const std::string& script) { return run(kClass + script + "\n%>", "").body; }
  template <std::size_t count>
  void expect(const Row (&rows)[count]) {
    for (const Row& row : rows) EXPECT_EQ(row.body, body_of(row.script)) << row.script;
  }
};

TEST_F(VbScriptLifetimes, EndWithTheVariable) {
  constexpr Row kRows[] = {
      {"Set x = Made(1) : W 1 : Set x = Nothing : W 2", "+1 1 -1 2 "},
      {"Set x = Made(1) : W 1 : Set x = Made(2) : W 2", "+1 1 +2-1 2 -2"},
      {"Set x = Made(1) : W 1 : x = 5 : W 2", "+1 1 -1 2 "},
      {"Set x = Made(1) : Set y = x : Set x = Nothing : W 1 : Set y = Nothing : W 2", "+1 1 -1 2 "},
      {"Set x = Made(1) : Set x = x : W 1", "+1 1 -1"},
      {"Set x = Made(1) : Set x = x.Self : W 1", "+1 1 -1"},
      {"Set x = Made(1) : For x = 1 To 2 : W x : Next", "+1-1 1  2 "},
      {"Set x = Made(1) : ReDim x(2) : W 1", "+1-1 1 "},
      {"Sub S : Dim o : Set o = Made(1) : W 1 : End Sub\nS : W 2", "+1 1 -1 2 "},
      {"Sub S : Dim o : Set o = Made(1) : Exit Sub : W 1 : End Sub\nS : W 2", "+1-1 2 "},
      {"Sub S : Set undeclared = Made(1) : End Sub\nS : W 2", "+1-1 2 "},
      {"Sub S : Dim o, p : Set o = Made(1) : Set p = Made(2) : End Sub\nS : W 2", "+1+2-1-2 2 "},
      {"Dim g : Sub S : Set g = Made(1) : End Sub\nS : W 1 : S : W 2 : Set g = Nothing : W 3", "+1 1 +1-1 2 -1 3 "},
      {"Sub R(n) : Dim o : Set o = Made(n) : If n > 1 Then R n - 1\nW n : End Sub\nR 3", "+3+2+1 1 -1 2 -2 3 -3"},
  };
  expect(kRows);
}

TEST_F(VbScriptLifetimes, EndWithTheStatementThatOnlyUsesThem) {
  constexpr Row kRows[] = {
      {"Made 1 : W 1", "+1-1 1 "},
      {"x = Made(1).N : W x", "+1-1 1 "},
      {"x = (New C).N : W TypeName(x)", "- Empty "},
      {"W Made(1) : W 2", "+1 1 -1 2 "},
      {"Response.Write Made(1).Self.Self.N : W 2", "+11-1 2 "},
      {"If Made(1).N = 1 Then W \"in\"", "+1-1 in "},
      {"If Made(1).N = 2 Then\nElseIf Made(2).N = 2 Then\nW \"in\"\nEnd If", "+1-1+2-2 in "},
      {"Do While Made(i).N < 1 : i = i + 1 : W i : Loop", "+- 1 +1-1"},
      {"Do : i = i + 1 : W i : Loop Until Made(i).N = 2", " 1 +1-1 2 +2-2"},
      {"For i = Made(1).N To Made(2).N : W i : Next", "+1+2-1-2 1  2 "},
      {"For i = 1 To Made(2).N Step 1 : W i : Next", "+2-2 1  2 "},
      {"Select Case Made(1).N : Case Made(2).N : W \"a\" : Case Made(1).N : W \"b\" : End Select", "+1-1+2-2+1-1 b "},
      {"With Made(1) : W .N : End With : W 2", "+1 1 -1 2 "},
      {"For i = 1 To 2 : With Made(i) : Exit For : End With : Next : W 2", "+1-1 2 "},
      {"Sub S : With Made(1) : Exit Sub : End With : End Sub\nS : W 2", "+1-1 2 "},
      {"For i = 1 To 2 : Do : With Made(i) : Exit Do : End With : Loop : W i : Next", "+1-1 1 +2-2 2 "},
      {"With Made(1) : With Made(2) : W .N : End With : W .N : End With", "+1+2 2 -2 1 -1"},
      {"x = Eval(\"Made(1).N\") : W x", "+1-1 1 "},
      {"x = TypeName(Made(1)) & TypeName(Made(2)) : W x", "+1+2-1-2 CC "},
      {"x = IsObject(New C) : W x", "- True "},
  };
  expect(kRows);
}

TEST_F(VbScriptLifetimes, ArePassedOn) {
  constexpr Row kRows[] = {
      {"Sub S(o) : W o.N : End Sub\nS Made(1) : W 2", "+1 1 -1 2 "},
      {"Sub S(ByVal o) : W o.N : Set o = Nothing : W 2 : End Sub\nSet x = Made(1) : S x : W 3 : Set x = Nothing",
       "+1 1  2  3 -1"},
      {"Sub S(ByRef o) : Set o = Nothing : W 1 : End Sub\nSet x = Made(1) : S x : W 2", "+1-1 1  2 "},
      {"Sub S(o) : Set o = Made(2) : W 1 : End Sub\nSet x = Made(1) : S x : W x.N : Set x = Nothing", "+1+2-1 1  2 -2"},
      {"Sub S(o) : Set o = Made(2) : W 1 : End Sub\nS 5 : W 2", "+2 1 -2 2 "},
      {"Sub S(o) : T o : End Sub\nSub T(o) : Set o = Nothing : End Sub\nSet x = Made(1) : S x : W 2", "+1-1 2 "},
      {"Sub S(o) : Set o = Nothing : W 1 : End Sub\nDim a(1) : Set a(0) = Made(1) : S a(0) : W 2", "+1-1 1  2 "},
      {"Function F(o) : Set F = o : End Function\nSet x = F(Made(1)) : W 1 : Set x = Nothing", "+1 1 -1"},
      {"Function F : Set F = Made(1) : Set F = Made(2) : W 1 : End Function\nSet x = F : W 2", "+1+2-1 1  2 -2"},
      {"Function F : Set F = Made(1) : End Function\nF : W 2", "+1-1 2 "},
      {"Function F(o) : F = o.N : End Function\nW F(Made(1))", "+1 1 -1"},
      {"Dim g : Sub S(o, n) : W n : W o.N : End Sub\nFunction Kill : Set g = Nothing : W \"kill\" : Kill = 3 : End "
       "Function\nSet g = Made(1) : S g, Kill()",
       "+1 kill  3  1 -1"},
      {"Dim g : Function Kill : Set g = Nothing : W \"kill\" : Kill = 3 : End Function\n"
       "Set g = Made(1) : x = g.N + Kill() : W x",
       "+1-1 kill  4 "},
      {"Dim g : Function Kill(n) : Set g = Nothing : W \"kill\" : Kill = n : End Function\n"
       "Set g = Made(1) : g.Take Kill(3) : W 1",
       "+1 kill  take3 -1 1 "},
      {"Set f = GetRef(\"Made\") : Set x = f(1) : W 1 : Set x = Nothing : W 2", "+1 1 -1 2 "},
  };
  expect(kRows);
}

TEST_F(VbScriptLifetimes, EndWithWhatHoldsThem) {
  constexpr Row kRows[] = {
      {"Set x = Made(1) : Set x.A = Made(2) : Set x = Nothing : W 1", "+1+2-1-2 1 "},
      {"Set x = Made(1) : Set x.A = Made(2) : Set x.A = Nothing : W 1", "+1+2-2 1 -1"},
      {"Set x = Made(1) : Set x.Other = Made(2) : W 1 : Set x.Other = Made(3) : W 2 : Set x = Nothing",
       "+1+2 1 +3-2 2 -1-3"},
      {"Set x = Made(1) : x.Hide Made(2) : W 1 : Set x = Nothing : W 2", "+1+2 1 -1-2 2 "},
      {"Set x = Made(1) : W x.Child(2).N : Set y = x.A : Set x = Nothing : W 1 : Set y = Nothing : W 2",
       "+1+2 2 -1 1 -2 2 "},
      {"Set x = Made(1) : Set x.L(0) = Made(2) : Set x.L(1) = Made(3) : W 1 : Set x = Nothing : W 2",
       "+1+2+3 1 -1-2-3 2 "},
      {"Class Plain\nPublic P\nEnd Class\nSet x = New Plain : Set x.P = Made(1) : W 1 : Set x = Nothing : W 2",
       "+1 1 -1 2 "},
      {"Dim a(2) : Set a(0) = Made(1) : Set a(1) = Made(2) : W 1 : Set a(0) = Made(3) : W 2 : Erase a : W 3",
       "+1+2 1 +3-1 2 -3-2 3 "},
      {"Dim a() : ReDim a(2) : Set a(0) = Made(1) : Set a(2) = Made(2) : ReDim Preserve a(1) : W 1 : ReDim a(1) : W 2",
       "+1+2-2 1 -1 2 "},
      {"Dim a() : ReDim a(0) : Set a(0) = Made(1) : Erase a : W 1", "+1-1 1 "},
      {"ReDim a(1) : Set a(0) = Made(1) : b = a : Erase a : W 1 : b = Empty : W 2", "+1 1 -1 2 "},
      {"ReDim a(1) : Set a(0) = Made(1) : a(0) = 5 : W 1", "+1-1 1 "},
      {"Dim a(1, 1) : Set a(1, 0) = Made(1) : W 1 : Set a(1, 0) = Nothing : W 2", "+1 1 -1 2 "},
      {"Sub S : Dim a(1) : Set a(1) = Made(1) : W 1 : End Sub\nS : W 2", "+1 1 -1 2 "},
      {"Function F : Dim a(1) : Set a(1) = Made(1) : F = a : End Function\nx = F : W x(1).N : x = 0 : W 2",
       "+1 1 -1 2 "},
      {"Function F : Dim a(1) : Set a(1) = Made(1) : F = a : End Function\nW F()(1).N : W 2", "+1 1 -1 2 "},
      {"Sub S(a) : W a(0).N : Set a(0) = Nothing : W 1 : End Sub\nDim b(1) : Set b(0) = Made(1) : S b : W 2",
       "+1 1 -1 1  2 "},
      {"ReDim inner(0) : Set inner(0) = Made(1) : Dim o(1) : o(0) = inner : inner = 0 : W 1 : o(0) = 0 : W 2",
       "+1 1 -1 2 "},
      {"Dim a(1) : Set a(0) = Made(1) : Set a(1) = Made(2) : For Each x In a : W x.N : Next : Erase a : W 3 : Set x = "
       "Nothing",
       "+1+2 1  2 -1 3 -2"},
      {"ReDim a(1) : Set a(0) = Made(1) : Set a(1) = Made(2) : For Each x In a : W x.N : Erase a : W \"e\" : Next : W "
       "3",
       "+1+2 1 -2 e  3 -1"},
      {"Function F : Dim a(1) : Set a(0) = Made(1) : Set a(1) = Made(2) : F = a : End Function\n"
       "For Each x In F : W x.N : Exit For : Next : W 3",
       "+1+2 1 -2 3 -1"},
  };
  expect(kRows);
}

TEST_F(VbScriptLifetimes, OfObjectsThatNobodyCountsAreThoseOfThePage) {
  constexpr Row kRows[] = {
      {"Set d = Server.CreateObject(\"Scripting.Dictionary\") : Set x = Made(1) : d.Add \"k\", x : Set x = Nothing : "
       "W d(\"k\").N : d.RemoveAll : Set d = Nothing : W 2",
       "+1 1  2 -1"},
      {"Set d = Server.CreateObject(\"Scripting.Dictionary\") : ReDim a(0) : Set a(0) = Made(1) : d.Add \"k\", a : a = "
       "0 : W d(\"k\")(0).N",
       "+1 1 -1"},
      // Each of them holds the other.
      {"Set x = Made(1) : Set x.A = Made(2) : Set x.A.B = x : Set x = Nothing : W 1", "+1+2 1 -1-2"},
      {"Set x = Made(1) : Set y = Made(2) : W 1", "+1+2 1 -1-2"},
      {"Set y = Made(1) : Set x = Made(2) : Set y = Nothing : Set z = Made(3) : W 1", "+1+2-1+3 1 -2-3"},
  };
  expect(kRows);
  EXPECT_EQ("+1 1 -1", run(std::string(kClass) + "Set x = Made(1) : Set x = Nothing : W 1\n%><script runat=\"server\" "
                                                 "language=\"JScript\">var y = 1;</script>",
                           "")
                           .body);
}

TEST_F(VbScriptLifetimes, AreThereWhileTheirMembersRun) {
  constexpr Row kRows[] = {
      {"Dim g\nClass D\nPublic N\nSub Drop : Set g = Nothing : W N : End Sub\nSub Class_Terminate : W \"end\" : End "
       "Sub\nEnd Class\nSet g = New D : g.N = 4 : g.Drop : W 5",
       " 4  end  5 "},
      {"Dim g\nClass D\nSub Class_Initialize : Set g = Me : End Sub\nSub Class_Terminate : W \"end\" : End Sub\nEnd "
       "Class\nx = TypeName(New D) : W x : Set g = Nothing : W 1",
       " D  end  1 "},
      {"Dim g\nClass D\nSub Class_Initialize : Set g = Me : Set g = Nothing : W 0 : End Sub\n"
       "Sub Class_Terminate : W \"end\" : End Sub\nEnd Class\nSet x = New D : W 1 : Set x = Nothing : W 2",
       " 0  1  end  2 "},
      // One that is reached again ends once.
      {"Dim g\nClass D\nPublic A\nSub Class_Terminate : W \"end\" : Set g = Me : End Sub\nEnd Class\n"
       "Set x = New D : Set x.A = Made(1) : Set x = Nothing : W g.A.N : Set g = Nothing : W 2",
       "+1 end  1 -1 2 "},
      {"Class D\nPublic A\nSub Class_Terminate : W A.N : Set A = Nothing : W \"end\" : End Sub\nEnd Class\n"
       "Set x = New D : Set x.A = Made(1) : Set x = Nothing : W 2",
       "+1 1 -1 end  2 "},
  };
  expect(kRows);
}

TEST_F(VbScriptLifetimes, EndWhereErrorsLead) {
  constexpr Row kRows[] = {
      {"Sub S : Dim o : Set o = Made(1) : o.Fail : End Sub\nOn Error Resume Next : S : W Err.Number", "+1-1 1000 "},
      {"On Error Resume Next : Made(1).Fail : W Err.Number", "+1-1 1000 "},
      {"Sub S : On Error Resume Next : Dim o : Set o = Made(1) : o.Fail : W Err.Number : End Sub\nS : W 1",
       "+1 1000 -1 1 "},
      {"Sub S(o) : o.Fail : End Sub\nOn Error Resume Next : S Made(1) : W Err.Number", "+1-1 1000 "},
      {"Sub S : With Made(1) : .Fail : End With : End Sub\nOn Error Resume Next : S : W Err.Number", "+1-1 1000 "},
      {"On Error Resume Next : With Made(1) : .Fail : W Err.Number : End With : W 2", "+1 1000 -1 2 "},
      {"Class D\nSub Class_Terminate : Err.Raise 7000 : End Sub\nEnd Class\nOn Error Resume Next\nSet x = New D : Set "
       "x = Nothing : W Err.Number : W x Is Nothing",
       " 7000  True "},
      // Of two failures the first is told, and all end.
      {"Class D\nPublic N\nSub Class_Terminate : W N : Err.Raise 7000 + N : End Sub\nEnd Class\n"
       "Sub S : Dim x, y : Set x = New D : x.N = 1 : Set y = New D : y.N = 2 : Err.Raise 6000 : End Sub\n"
       "Sub T : Dim x, y : Set x = New D : x.N = 1 : Set y = New D : y.N = 2 : End Sub\n"
       "On Error Resume Next\nS : W Err.Number : Err.Clear : T : W Err.Number",
       " 1  2  6000  1  2  7001 "},
      {"Set x = Made(1) : Response.End", "+1"},
      {"Sub S : Dim x : Set x = Made(1) : Response.End : End Sub\nS", "+1"},
      {"Sub S : Dim x : Set x = Made(1) : R 0 : End Sub\nSub R(n) : R n + 1 : End Sub\nOn Error Resume Next : S : W "
       "Err.Number",
       "+1-1 28 "},
  };
  expect(kRows);
}

TEST_F(VbScriptLifetimes, EndInCodeThatIsMade) {
  constexpr Row kRows[] = {
      {"Execute \"Set x = Made(1) : Set x = Nothing\" : W 1", "+1-1 1 "},
      {"Set x = Made(1) : Execute \"Set x = Nothing\" : W 1", "+1-1 1 "},
      {"ExecuteGlobal \"Set x = Made(1)\" : W 1 : ExecuteGlobal \"Set x = Nothing\" : W 2", "+1 1 -1 2 "},
      {"ExecuteGlobal \"Sub S : Dim o : Set o = Made(1) : W 1 : End Sub\" : S : W 2", "+1 1 -1 2 "},
      {"Sub S(o) : Execute \"Set o = Nothing\" : W 1 : End Sub\nSet x = Made(1) : S x : W 2", "+1-1 1  2 "},
      {"Sub S : Dim o : Execute \"Set o = Made(1)\" : W o.N : End Sub\nS : W 2", "+1 1 -1 2 "},
      {"Set x = Made(1) : Set y = Eval(\"x\") : Set x = Nothing : W 1 : Set y = Nothing : W 2", "+1 1 -1 2 "},
      {"Set x = Eval(\"Made(1)\") : W 1 : Set x = Nothing : W 2", "+1 1 -1 2 "},
  };
  expect(kRows);
  EXPECT_EQ(" 1  end ", run("<%@ Language=\"VBScript\" %><% Sub W(t) : Response.Write \" \" & t & \" \" : End Sub\n"
                            "ExecuteGlobal \"Class D\" & vbLf & \"Sub Class_Terminate : W \"\"end\"\" : End Sub\" & "
                            "vbLf & \"End Class\"\nSet x = Eval(\"New D\") : Set x = Nothing : W 1 %>",
                            "")
                            .body);
}

TEST_F(VbScriptLifetimes, OfLongListsEndWithoutRecursion) {
  EXPECT_EQ("-1-2 done 20000",
            body_of("Class Node\nPublic NextOne\nSub Class_Terminate : n = n + 1 : End Sub\nEnd Class\n"
                    "Dim n, i, head, one\nSet head = Nothing\nFor i = 1 To 20000\nSet one = New "
                    "Node\nSet one.NextOne = head\nSet head = one\nNext\nSet one = Nothing\n"
                    "Response.Write \"-1-2\"\nSet head = Nothing\nW \"done\"\nResponse.Write n"));
}

}  // namespace
