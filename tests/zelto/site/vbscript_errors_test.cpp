// Run-time errors: their numbers and words are those of the public language reference, and so is what raises each.
#include "zelto/site/vbscript_fixture.h"

namespace {

using test::VbScriptRow;

class VbScriptErrors : public test::VbScriptFixture {};

TEST_F(VbScriptErrors, HaveTheirWords) {
  struct Error {
    int number;
    const char* words;
  };
  static constexpr Error kErrors[] = {
      {5, "Invalid procedure call or argument"},
      {6, "Overflow"},
      {7, "Out of memory"},
      {9, "Subscript out of range"},
      {10, "This array is fixed or temporarily locked"},
      {11, "Division by zero"},
      {13, "Type mismatch"},
      {14, "Out of string space"},
      {17, "Can't perform requested operation"},
      {28, "Out of stack space"},
      {35, "Sub or Function not defined"},
      {48, "Error in loading DLL"},
      {51, "Internal error"},
      {52, "Bad file name or number"},
      {53, "File not found"},
      {54, "Bad file mode"},
      {55, "File already open"},
      {57, "Device I/O error"},
      {58, "File already exists"},
      {61, "Disk full"},
      {62, "Input past end of file"},
      {67, "Too many files"},
      {68, "Device unavailable"},
      {70, "Permission denied"},
      {71, "Disk not ready"},
      {74, "Can't rename with different drive"},
      {75, "Path/File access error"},
      {76, "Path not found"},
      {91, "Object variable not set"},
      {92, "For loop not initialized"},
      {94, "Invalid use of Null"},
      {322, "Can't create necessary temporary file"},
      {424, "Object required"},
      {429, "ActiveX component can't create object"},
      {430, "Class doesn't support Automation"},
      {432, "File name or class name not found during Automation operation"},
      {438, "Object doesn't support this property or method"},
      {440, "Automation error"},
      {445, "Object doesn't support this action"},
      {446, "Object doesn't support named arguments"},
      {447, "Object doesn't support current locale setting"},
      {448, "Named argument not found"},
      {449, "Argument not optional"},
      {450, "Wrong number of arguments or invalid property assignment"},
      {451, "Object not a collection"},
      {453, "Specified DLL function not found"},
      {455, "Code resource lock error"},
      {457, "This key is already associated with an element of this collection"},
      {458, "Variable uses an Automation type not supported in VBScript"},
      {462, "The remote server machine does not exist or is unavailable"},
      {481, "Invalid picture"},
      {500, "Variable is undefined"},
      {501, "Illegal assignment"},
      {502, "Object not safe for scripting"},
      {503, "Object not safe for initializing"},
      {504, "Object not safe for creating"},
      {505, "Invalid or unqualified reference"},
      {506, "Class not defined"},
      {507, "An exception occurred"},
      {1002, "Syntax error"},
      {1058, "'Default' specification can only be on Property Get"},
      {5016, "Regular Expression object expected"},
      {5017, "Syntax error in regular expression"},
      {5018, "Unexpected quantifier"},
      {5019, "Expected ']' in regular expression"},
      {5020, "Expected ')' in regular expression"},
      {5021, "Invalid range in character set"},
      {32811, "Element not found"},
      {32812, "The specified date is not available in the current locale's calendar"},
      // That nobody has words for.
      {1, "Unknown runtime error"},
      {1004, "Unknown runtime error"},
      {99999, "Unknown runtime error"},
      {-1, "Unknown runtime error"},
  };
  std::string script = "On Error Resume Next\n", answer;
  for (const Error& error : kErrors) {
    script += "Err.Raise " + std::to_string(error.number) +
              " : Response.Write Err.Number & \" \" & Err.Description & vbLf : Err.Clear\n";
    answer += std::to_string(error.number) + " " + error.words + "\n";
  }
  EXPECT_EQ(answer, body_of(script));
}

// The statement behind `On Error Resume Next`, and the number that it leaves.
TEST_F(VbScriptErrors, AreRaisedByTheLanguage) {
  static constexpr VbScriptRow kRows[] = {
      {"x = Chr(-1)", "5"},
      {"Err.Raise 0", "5"},
      {"x = CByte(256)", "6"},
      {"x = 1E308 * 10", "6"},
      {"ReDim a(2000000000)", "7"},
      {"x = Array(1)(1)", "9"},
      {"ReDim a(-2)", "9"},
      {"Dim fixed(2) : ReDim fixed(3)", "10"},
      {"x = 1 / 0", "11"},
      {"x = 1 + \"a\"", "13"},
      {"x = nobody(1)", "13"},
      {"nobody", "13"},
      {"Erase x", "13"},
      {"Response.Write Array(1)", "13"},
      {"x = Space(2000000000)", "14"},
      {"Function Deep(n) : Deep = Deep(n + 1) : End Function : x = Deep(1)", "28"},
      {"x = MsgBox(\"?\")", "70"},
      {"Set o = Nothing : o.Nope", "91"},
      {"x = Nothing + 1", "91"},
      {"For i = 1 To Null : Next", "92"},
      {"For Each x In 5 : Next", "92"},
      {"x = CStr(Null)", "94"},
      {"x.y = 1", "424"},
      {"Set x = 1", "424"},
      {"x = 1 Is 2", "424"},
      {"Set o = CreateObject(\"No.Such\")", "429"},
      {"Set o = GetObject(\"No.Such\")", "429"},
      {"x = New RegExp", "438"},
      {"Response.Nope", "438"},
      {"Set o = New RegExp : o.Nope = 1", "438"},
      {"x = SetLocale(99999)", "447"},
      {"Sub One(a) : End Sub : One", "450"},
      {"Sub Other(a) : End Sub : Other 1, 2", "450"},
      {"x = Left(\"a\")", "450"},
      {"Sub A2(a, b) : End Sub : Set r = GetRef(\"A2\") : r 1", "450"},
      {"Sub A2(a, b) : End Sub : Set r = GetRef(\"A2\") : r 1, 2, 3", "450"},
      {"Function F1(a) : F1 = a : End Function : Set r = GetRef(\"F1\") : x = r()", "450"},
      {"Function F1(a) : F1 = a : End Function : Set r = GetRef(\"F1\") : x = r(1, 2)", "450"},
      {"Function F1(a) : F1 = a : End Function : Set r = GetRef(\"F1\") : x = r + 1", "450"},
      {"Function F1(a) : F1 = a : End Function : Set r = GetRef(\"F1\") : x = r(1)", "0"},
      {"Function F0 : F0 = 2 : End Function : Set r = GetRef(\"F0\") : x = r + 1", "0"},
      {"ExecuteGlobal \"Sub G1(a) : End Sub\" : Set r = GetRef(\"G1\") : r", "450"},
      {"ExecuteGlobal \"Sub G1(a) : End Sub\" : Set r = GetRef(\"G1\") : r 1", "0"},
      {"Class G : Property Get P : End Property : End Class : Set o = New G : x = o.P(1, 2)", "13"},
      {"For Each x In 5 : Exit For : Next", "451"},
      {"For Each x In New RegExp : Exit For : Next", "451"},
      {"Set d = CreateObject(\"Scripting.Dictionary\") : d.Add 1, 1 : d.Add 1, 2", "457"},
      {"Execute \"Option Explicit : undeclared = 1\"", "500"},
      {"Const K = 1 : K = 2", "501"},
      {"Const L = 1 : For L = 1 To 2 : Exit For : Next", "501"},
      {"Const M = 1 : For Each M In Array(1) : Exit For : Next", "501"},
      {".Nope = 1", "505"},
      {"Set o = New Nobody", "506"},
      {"Execute \"x = \"", "1023"},
      {"Execute \"x = * 2\"", "1002"},
      {"Set r = New RegExp : r.Pattern = \"\\\" : r.Test \"a\"", "5017"},
      {"Set r = New RegExp : r.Pattern = \"a**\" : r.Test \"a\"", "5018"},
      {"Set r = New RegExp : r.Pattern = \"[\" : r.Test \"a\"", "5019"},
      {"Set r = New RegExp : r.Pattern = \"(\" : r.Test \"a\"", "5020"},
      {"Set r = New RegExp : r.Pattern = \"[z-a]\" : r.Test \"a\"", "5021"},
  };
  for (const VbScriptRow& row : kRows) {
    EXPECT_EQ(row.answer, body_of(std::string("On Error Resume Next\n") + row.script + "\nResponse.Write Err.Number"))
        << row.script;
  }
}

TEST_F(VbScriptErrors, OfLoopsRunTheirStatementsOnceAndFailAgainAtTheirEnd) {
  constexpr VbScriptRow kRows[] = {
      {"On Error Resume Next\nFor i = 1 To 1 / 0\nResponse.Write Err.Number & \" \"\nNext\nResponse.Write Err.Number",
       "11 92"},
      {"On Error Resume Next\nFor Each x In 5\nResponse.Write Err.Number & \" \"\nNext\nResponse.Write Err.Number",
       "451 92"},
      {"On Error Resume Next\nFor i = 1 To 3\nn = n + 1 : i = \"x\"\nNext\nResponse.Write n & \" \" & Err.Number",
       "1 13"},
      {"On Error Resume Next\nFor i = 1 To 3\nn = n + 1 : i = Null\nNext\nResponse.Write n & \" \" & Err.Number",
       "1 94"},
      {"On Error Resume Next\nFor i = 1 To 3\nn = n + 1 : Set i = Nothing\nNext\nResponse.Write n & \" \" & Err.Number",
       "1 91"},
      {"On Error Resume Next\nDo Until 1 / 0\nn = n + 1\nIf n > 3 Then Exit Do\nLoop\nResponse.Write n & \" \" & "
       "Err.Number",
       "4 11"},
      {"On Error Resume Next\nDo\nn = n + 1\nLoop Until 1 / 0\nResponse.Write n & \" \" & Err.Number", "1 11"},
  };
  expect_pages(kRows);
}

TEST_F(VbScriptErrors, AreResumedInEveryStatement) {
  constexpr VbScriptRow kRows[] = {
      {"On Error Resume Next\nIf 1 / 0 Then Response.Write \"in\"\nResponse.Write Err.Number", "in11"},
      {"On Error Resume Next\nSelect Case 1 / 0\nCase 1\nResponse.Write \"in\"\nEnd Select\nResponse.Write Err.Number",
       "in11"},
      {"On Error Resume Next\nWith New Nobody\nResponse.Write \"in\"\nEnd With\nResponse.Write Err.Number", "in506"},
      {"On Error Resume Next\nx = 5\nx = 1 / 0\nResponse.Write x", "5"},
      {"On Error Resume Next\nReDim a(1) : a(0) = 3 : ReDim Preserve a(\"x\")\nResponse.Write Err.Number & a(0)",
       "133"},
      {"On Error Resume Next\nExecute \"x = 1 / 0\"\nResponse.Write Err.Number", "11"},
      {"On Error Resume Next\nExecuteGlobal \"x = 1 / 0\"\nResponse.Write Err.Number", "11"},
      {"On Error Resume Next\nx = Eval(\"1 / 0\")\nResponse.Write Err.Number", "11"},
      {"On Error Resume Next\n%><%= 1 / 0 %>after<%= Err.Number %><%", "after11"},
      {"Class C\nSub Class_Initialize : x = 1 / 0 : End Sub\nEnd Class\nOn Error Resume Next\nSet o = New C\n"
       "Response.Write Err.Number & TypeName(o)",
       "11Empty"},
      {"Class C\nProperty Get P : P = 1 / 0 : End Property\nProperty Let P(v) : x = CInt(\"a\") : End Property\n"
       "Public Default Function D : Err.Raise 1000 : End Function\nEnd Class\nSet o = New C\nOn Error Resume Next\n"
       "x = o.P : Response.Write Err.Number & \" \" : o.P = 1 : Response.Write Err.Number & \" \"\n"
       "x = o & \"\" : Response.Write Err.Number",
       "11 13 1000"},
      // It is the caller's next statement that follows.
      {"Sub A : B : Response.Write \"no\" : End Sub\nSub B : Err.Raise 500 : Response.Write \"no\" : End Sub\n"
       "On Error Resume Next\nA : Response.Write \"yes\" & Err.Number",
       "yes500"},
      {"Function F : On Error Resume Next : F = 1 : x = 1 / 0 : F = F + 1 : End Function\nResponse.Write F & "
       "Err.Number",
       "211"},
  };
  expect_pages(kRows);
}

TEST_F(VbScriptErrors, AreInErrUntilTheyAreCleared) {
  constexpr VbScriptRow kRows[] = {
      {"On Error Resume Next\nErr.Raise vbObjectError + 5, \"src\", \"words\", \"file.hlp\", 7\n"
       "Response.Write Err.Number & Err.Source & Err.Description & Err.HelpFile & Err.HelpContext",
       "-2147221499srcwordsfile.hlp7"},
      {"On Error Resume Next\nErr.Raise 6\nResponse.Write Err.Source", "Microsoft VBScript runtime error"},
      {"On Error Resume Next\nErr.Raise 6\nErr.Clear\nResponse.Write Err.Number & Err.Description & Err.Source", "0"},
      {"On Error Resume Next\nx = 1 / 0\nOn Error Resume Next\nResponse.Write Err.Number", "0"},
      {"On Error Resume Next\nx = 1 / 0\nOn Error GoTo 0\nResponse.Write Err.Number", "0"},
      {"On Error Resume Next\nx = 1 / 0\nx = 1\nResponse.Write Err", "11"},
      {"Err.Number = 5 : Err.Description = \"mine\" : Err.Source = \"s\" : Err.HelpFile = \"h\" : Err.HelpContext = 3\n"
       "Response.Write Err.Number & Err.Description & Err.Source & Err.HelpFile & Err.HelpContext",
       "5minesh3"},
      {"On Error Resume Next\nErr.Raise\nResponse.Write Err.Number", "450"},
      {"On Error Resume Next\nErr.Raise \"x\"\nResponse.Write Err.Number", "13"},
  };
  expect_pages(kRows);
}

}  // namespace
