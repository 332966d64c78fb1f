// Each statement of the public language reference in its forms, with what comes of it there.
#include "zelto/site/vbscript_fixture.h"

namespace {

using test::VbScriptRow;

class VbScriptStatements : public test::VbScriptFixture {};

TEST_F(VbScriptStatements, DeclareAndAssign) {
  constexpr VbScriptRow kRows[] = {
      {"Dim a, b(2), c() : Dim d : b(2) = 1 : ReDim c(1) : Response.Write TypeName(a) & UBound(b) & UBound(c) & "
       "IsEmpty(d)",
       "Empty21True"},
      {"Dim fixed(2)\nOn Error Resume Next\nReDim fixed(3)\nResponse.Write Err.Number & UBound(fixed)", "102"},
      {"ReDim a(1, 2) : a(1, 2) = 7\nOn Error Resume Next\nReDim Preserve a(2, 2)\nResponse.Write Err.Number & a(1, 2)",
       "97"},
      {"ReDim a(2), b(3) : a(0) = 1 : ReDim a(1) : Response.Write TypeName(a(0)) & UBound(b)", "Empty3"},
      {"n = 3 : ReDim a(n * 2) : Response.Write UBound(a)", "6"},
      {"Dim f(1) : f(0) = 1 : f(1) = \"a\" : Erase f : Response.Write TypeName(f(0)) & UBound(f)", "Empty1"},
      {"Dim x : x = 5\nOn Error Resume Next\nErase x\nResponse.Write Err.Number", "13"},
      {"Const a = 1, b = \"x\", c = #1/2/2000#, d = True, e = Null, f = Empty, g = Nothing, h = -1.5, i = "
       "&HFF\nResponse.Write a & b & c & d & TypeName(e) & TypeName(f) & TypeName(g) & h & i",
       "1x1/2/2000TrueNullEmptyNothing-1.5255"},
      {"Const a = 1\nOn Error Resume Next\na = 2\nResponse.Write Err.Number & a & Err.Description",
       "5011Illegal assignment: 'a'"},
      {"Const a = 1\nSub S\nOn Error Resume Next\na = 2\nResponse.Write Err.Number & a\nEnd Sub\nS", "5011"},
      {"Const a = 1\nOn Error Resume Next\nSet a = New RegExp\nResponse.Write Err.Number", "501"},
      {"Set a = New RegExp : Set b = a : b.Pattern = \"x\" : Response.Write a.Pattern & (a Is b)", "xTrue"},
      {"On Error Resume Next\nSet a = 5\nResponse.Write Err.Number", "424"},
      {"Let a = 5 : Response.Write a", "5"},
      {"Dim i : For i = 1.5 To 3 : Response.Write i & TypeName(i) & \" \" : Next", "1.5Double 2.5Double "},
      {"a = 1 : b = a = 1 : Response.Write b", "True"},
      {"On Error Resume Next\nSet d = CreateObject(\"Scripting.Dictionary\")\nd.Add \"a\", 1 : d.Add \"b\", 2\nFor "
       "Each k In d : d.RemoveAll : n = n + 1 : Next\nResponse.Write n > 0",
       "True"},
      {"Dim z(1)\nOn Error Resume Next\nz = 5 : Response.Write Err.Number & TypeName(z)", "0Integer"},
      {"Dim z(1)\nz = Array(1, 2, 3) : Response.Write UBound(z)", "2"},
      {"On Error Resume Next\nSet a = 1 : Response.Write Err.Number : Err.Clear\nSet a = \"x\" : Response.Write "
       "Err.Number : Err.Clear\nSet a = Null : Response.Write Err.Number : Err.Clear\nSet a = Array(1) : "
       "Response.Write Err.Number : Err.Clear\nSet b(1) = New RegExp : Response.Write Err.Number",
       "42442442442413"},
      {"Dim a(1) : Set a(0) = New RegExp : Response.Write TypeName(a(0))", "IRegExp2"},
      {"Dim a(1, 1) : For Each x In a : n = n + 1 : Next : Response.Write n", "4"},
      {"Dim m(1,1,1,1,1,1,1,1,1,1,1,1) : m(1,1,1,1,1,1,1,1,1,1,1,1) = 3 : Response.Write m(1,1,1,1,1,1,1,1,1,1,1,1) & "
       "UBound(m, 12)",
       "31"},
  };
  expect_pages(kRows);
}

TEST_F(VbScriptStatements, Branch) {
  constexpr VbScriptRow kRows[] = {
      {"If 1 Then Response.Write \"a\" : Response.Write \"b\" Else Response.Write \"c\"\nIf 0 Then Response.Write "
       "\"d\" : Response.Write \"e\" Else Response.Write \"f\" : Response.Write \"g\"",
       "abfg"},
      {"If False Then\nResponse.Write 1\nElseIf True Then\nResponse.Write 2\nElse\nResponse.Write 3\nEnd If", "2"},
      {"If True Then If False Then Response.Write 1 Else Response.Write 2", "2"},
      {"If True Then\n' nothing\nEnd If : Response.Write \"x\"", "x"},
      {"On Error Resume Next\nIf \"abc\" Then Response.Write \"in\"\nResponse.Write Err.Number", "in13"},
      {"Select Case 5\nCase 1, 2 : Response.Write \"a\"\nCase 3, 5 : Response.Write \"b\"\nCase 5 : Response.Write "
       "\"c\"\nCase Else : Response.Write \"d\"\nEnd Select",
       "b"},
      {"Select Case True : Case 1 > 2 : Response.Write \"a\" : Case 2 > 1 : Response.Write \"b\" : End Select", "b"},
      {"Select Case \"x\" : Case Else : Response.Write \"only\" : End Select\nSelect Case 1 : End Select", "only"},
  };
  expect_pages(kRows);
}

TEST_F(VbScriptStatements, Loop) {
  constexpr VbScriptRow kRows[] = {
      {"For i = 1 To 0 : Response.Write \"no\" : Next : Response.Write i", "1"},
      {"For i = 1 To 10 Step 4 : Response.Write i & \" \" : Next : Response.Write i", "1 5 9 13"},
      {"For i = 3 To 1 Step -1 : Response.Write i : Next", "321"},
      {"For i = \"1\" To \"3\" : Response.Write i & TypeName(i) : Next", "1Double2Double3Double"},
      {"For Each x In Array(1, 2, 3)\nIf x = 2 Then Exit For\nResponse.Write x\nNext\nResponse.Write x", "12"},
      {"For Each x In Array() : Response.Write \"no\" : Next : Response.Write \"end\"", "end"},
      {"a = Array(1, 2) : For Each x In a : x = 9 : Next : Response.Write a(0) & a(1)", "12"},
      {"i = 0 : Do While i < 3 : i = i + 1 : Loop : Response.Write i\nDo Until i = 5 : i = i + 1 : Loop : "
       "Response.Write i\nDo : i = i + 1 : Loop While i < 7 : Response.Write i\nDo : i = i + 1 : Loop Until i > 8 : "
       "Response.Write i\nDo : i = i + 1 : If i > 10 Then Exit Do\nLoop : Response.Write i\nWhile i < 13 : i = i + 1 : "
       "Wend : Response.Write i",
       "35791113"},
      {"Do : i = i + 1 : Loop While i < 3 : Response.Write i", "3"},
      {"While Null : Response.Write \"no\" : Wend : Response.Write \"done\"", "done"},
      {"For i = CByte(254) To 255 : n = n + 1 : Next\nResponse.Write n & TypeName(i)", "2Integer"},
  };
  expect_pages(kRows);
}

TEST_F(VbScriptStatements, CallProcedures) {
  constexpr VbScriptRow kRows[] = {
      {"Sub S(x) : x = 5 : End Sub\nConst a = 1\nS a : Response.Write a", "1"},
      {"Sub S : Response.Write \"a\" : Exit Sub : Response.Write \"b\" : End Sub\nFunction F : F = 1 : Exit Function : "
       "F = 2 : End Function\nS : Call S : Call S() : S() : Response.Write F & F()",
       "aaaa11"},
      {"Function F : End Function\nResponse.Write TypeName(F())", "Empty"},
      {"Function F(n) : If n = 0 Then F = 0 Else F = n + F(n - 1)\nEnd Function\nResponse.Write F(10)", "55"},
      {"Sub S(a, b) : End Sub\nOn Error Resume Next\nS 1\nResponse.Write Err.Number & \":\" & Err.Description",
       "450:Wrong number of arguments or invalid property assignment: 'S'"},
      {"Sub S(a, b) : End Sub\nOn Error Resume Next\nS 1, 2, 3\nResponse.Write Err.Number & \":\" & Err.Description",
       "450:Wrong number of arguments or invalid property assignment: 'S'"},
      {"Sub S(a) : a = a + 1 : End Sub\nx = 1 : S x : S(x) : Call S(x) : S (x) : Response.Write x", "3"},
      {"Sub S(ByRef a, ByVal b) : a = 5 : b = 6 : End Sub\nx = 1 : y = 2 : S x, y : Response.Write x & y", "52"},
      {"Private x : Public y : x = 1 : y = 2\nPrivate Sub P : Response.Write x : End Sub\nPublic Function Q : Q = y : "
       "End Function\nPrivate Const K = 3\nPublic Const L = 4\nP : Response.Write Q & K & L",
       "1234"},
      {"Sub A : Execute \"Dim q : q = 5\" : Response.Write q : End Sub : A", "5"},
      {"Function F : On Error Resume Next : F = 1 : x = 1 / 0 : F = F + 1 : End Function\nResponse.Write F & "
       "Err.Number",
       "211"},
  };
  expect_pages(kRows);
}

TEST_F(VbScriptStatements, MakeClasses) {
  constexpr VbScriptRow kRows[] = {
      {"Class C : Public v : End Class\nSub S(a) : a = 7 : End Sub\nSet o = New C : o.v = 1 : S o.v : Response.Write "
       "o.v",
       "1"},
      {"Class C\nPrivate p_\nPublic Property Get V : V = p_ : End Property\nPublic Property Let V(n) : p_ = n * 2 : "
       "End Property\nPublic Property Set O(n) : Set p_ = n : End Property\nPublic Property Get O : Set O = p_ : End "
       "Property\nPrivate Sub Class_Initialize : p_ = 1 : Response.Write \"i\" : End Sub\nEnd Class\nSet c1 = New C : "
       "Response.Write c1.V : c1.V = 5 : Response.Write c1.V\nSet c1.O = New RegExp : Response.Write TypeName(c1.O)",
       "i110IRegExp2"},
      {"Class C\nProperty Get V : V = 1 : Exit Property : V = 2 : End Property\nEnd Class\nSet o = New C : "
       "Response.Write o.V\nOn Error Resume Next\no.V = 3 : Response.Write Err.Number",
       "1438"},
      {"Class C\nPrivate Sub H : End Sub\nPrivate x\nPublic Function T : H : x = 3 : T = x : End Function\nEnd "
       "Class\nSet o = New C : Response.Write o.T\nOn Error Resume Next\no.H : Response.Write Err.Number : "
       "Err.Clear\no.x = 1 : Response.Write Err.Number : Err.Clear\nResponse.Write o.nope : Response.Write Err.Number",
       "3438438438"},
      {"Class C\nDim a(2)\nPublic b\nPublic Function T : a(1) = 4 : T = a(1) & UBound(a) : End Function\nEnd "
       "Class\nSet o = New C : Response.Write o.T : o.b = Array(1, 2) : Response.Write o.b(1)",
       "422"},
      {"Class C\nPublic Default Property Get Item(i) : Item = \"i\" & i : End Property\nEnd Class\nSet o = New C : "
       "Response.Write o(3) & o.Item(4)",
       "i3i4"},
      {"Class C\nPublic Function Me_ : Set Me_ = Me : End Function\nPublic n\nEnd Class\nSet o = New C : o.n = 5 : "
       "Response.Write o.Me_.n",
       "5"},
  };
  expect_pages(kRows);
}

TEST_F(VbScriptStatements, ResumeExecuteAndSpanLines) {
  constexpr VbScriptRow kRows[] = {
      {"On Error Resume Next\na = New RegExp\nResponse.Write Err.Number", "438"},
      {"With New RegExp\n.Pattern = \"a\" : .Global = True\nResponse.Write .Replace(\"aba\", \"x\")\nWith "
       "Response\n.Write \"in\"\nEnd With\nResponse.Write .Pattern\nEnd With",
       "xbxina"},
      {"On Error Resume Next\nResponse.Write .x\nResponse.Write Err.Number", "505"},
      {"On Error Resume Next\nWith Nothing\n.x = 1\nEnd With\nResponse.Write Err.Number", "91"},
      {"On Error Resume Next\nWith 5\n.x = 1\nEnd With\nResponse.Write Err.Number", "424"},
      {"Stop : Response.Write \"after\"", "after"},
      {"Randomize : Randomize 5 : x = Rnd : Response.Write (x < 1)", "True"},
      {"Rnd(-1) : Randomize 10 : x = Rnd : Rnd(-1) : Randomize 10 : Response.Write (x = Rnd)", "True"},
      {"Execute \"x = 5\" : Response.Write x : Execute(\"x = 6\") : Response.Write x : ExecuteGlobal \"y = 7\" : "
       "Response.Write y",
       "567"},
      {"x = 1 : Response.Write Eval(\"x = 1\") & Eval(\"x + 1\")", "True2"},
      {"Rem a comment\nx = 1 : Rem another\n' third\nResponse.Write x _\n + 1", "2"},
      {"[my name] = 4 : Response.Write [my name]", "4"},
      {"On Error Resume Next\nx = 1 / 0\nSub S : On Error Resume Next : y = 1 : Response.Write Err.Number : End "
       "Sub\nS\nResponse.Write Err.Number",
       "00"},
      {"x = 10 : x = x _\n   - _\n   3 : Response.Write x", "7"},
      {"Response.Write 2 ^ 3 ^ 2 & \" \" & -2 ^ 2 & \" \" & 7 \\ 2 * 2 & \" \" & 7 Mod 4 \\ 2 & \" \" & 1 + 2 & 3 + 4 "
       "& \" \" & (1 & 2 = 12)",
       "64 -4 1 1 37 True"},
      {"Response.Write Not 1 = 1 And 2 = 2 Or 3 = 4", "False"},
      {"x = \"5\" : y = 5 : Response.Write (x = y) & (x = 5) & (\"5\" = y)", "FalseTrueTrue"},
      {"On Error Resume Next\nWith New Nope\nResponse.Write \"in\"\n.x = 1\nEnd With\nResponse.Write Err.Number",
       "in424"},
      {"On Error Resume Next\na = Array(1) : a(5) = 1 : Response.Write Err.Number : Err.Clear\nReDim a(-5) : "
       "Response.Write Err.Number : Err.Clear\nErase q : Response.Write Err.Number : Err.Clear\nExecute \"x = 1 / 0\" "
       ": Response.Write Err.Number : Err.Clear\nExecuteGlobal \"x = 1 / 0\" : Response.Write Err.Number : "
       "Err.Clear\nx = Eval(\"1 / 0\") : Response.Write Err.Number : Err.Clear\nExecute \"On Error Resume Next : x = 1 "
       "/ 0 : Response.Write Err.Number\" : Response.Write Err.Number",
       "99131111111111"},
      {"On Error Resume Next\nx = 5\nx = 1 / 0\nResponse.Write x", "5"},
      {"x = 32767 : y = x + 1 : Response.Write TypeName(y)", "Long"},
      {"Response.Write TypeName(GetRef(\"S\")) : Sub S : End Sub", "Object"},
      {"Response.Write ScriptEngine() & Now() - Now & Date() - Date & (Timer() > 0) & Rnd() * 0", "VBScript00True0"},
      {"x = Array(Array(1, 2), Array(3)) : Response.Write x(0)(1) & x(1)(0) & UBound(x(0))", "231"},
      {"Execute \"Dim m(\" & Replace(Space(59), \" \", \"0,\") & \"0) : Response.Write UBound(m, 60)\"\nOn Error "
       "Resume Next\nReDim m2(0) : Execute \"ReDim m2(\" & Replace(Space(60), \" \", \"0,\") & \"0)\" : Response.Write "
       "Err.Number",
       "09"},
  };
  expect_pages(kRows);
}

}  // namespace
