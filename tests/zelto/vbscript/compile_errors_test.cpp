// Each error with its number and place. The numbers and words are those of the public list of compilation errors.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <string>

#include "vbscript/compile_error.h"
#include "vbscript/compiler.h"

namespace zelto::vbscript {
namespace {

struct Row {
  const wchar_t* text;
  int number;  // 0: it compiles
  int line = 1;
  int column = 0;  // from 0
};

std::string narrow(std::wstring_view text) { return {text.begin(), text.end()}; }

class CompileErrors : public testing::TestWithParam<Row> {};

TEST_P(CompileErrors, HaveTheirNumberAndPlace) {
  const Row& row = GetParam();
  CompileError error{.fault = {}, .line = 1, .column = 0};
  try {
    compile({.text = row.text});
  } catch (const CompileError& failure) {
    error = failure;
  }
  EXPECT_EQ(row.number, static_cast<int>(error.fault)) << narrow(row.text);
  EXPECT_EQ(row.line, error.line) << narrow(row.text);
  EXPECT_EQ(row.column, error.column) << narrow(row.text);
}

const Row kTokens[] = {
    {L"x = \"abc", 1033, 1, 4}, {L"x = 1\ny = \"a\nz = 2", 1033, 2, 4}, {L"x = 5 ? 3", 1032, 1, 6},
    {L"x = {1}", 1032, 1, 4},   {L"x = &HFFFFFFFFF", 1031, 1, 4},       {L"x = 12abc", 1031, 1, 4},
    {L"x = [abc", 1007, 1, 8},  {L"x = #13/45/2000#", 1002, 1, 4},      {L"x = 1e999", 1031, 1, 4},
    {L"x = #12/31/1999#", 0},   {L"x = \"a\"\"b\" ' it\"s", 0},         {L"Rem \"x", 0},
};
const Row kExpressions[] = {
    {L"x = ", 1023, 1, 4},
    {L"x = 1 +", 1023, 1, 7},
    {L"x = (1", 1006, 1, 6},
    {L"x = f(1", 1006, 1, 7},
    {L"x = 1 2", 1025, 1, 6},
    {L"x = a.", 1010, 1, 6},
    {L"x = * 2", 1002, 1, 4},
    {L"Set x = New", 1010, 1, 11},
    {L"Set x 1", 1011, 1, 6},
    {L"x = Not", 1023, 1, 7},
    {L"x = a = b = c", 0},
    {L"x = -2 ^ -1 Mod 3 \\ 2", 0},
    {L"f(1, 2)", 1044, 1, 7},
    {L"f (1), 2", 0},
    {L"f (1) + 2, 3", 0},
    {L"Call f(1, 2)", 0},
    {L"f 1,, 2", 0},
    {L"f -1", 0},
    {L"f .x", 0},
    {L"If = 1", 1002, 1, 3},
    {L"x = = 1", 1002, 1, 4},
    {L"x = 1 + = 2", 1002, 1, 8},
    {L"Dim 1", 1010, 1, 4},
    {L"x = New 1", 1010, 1, 8},
    {L"Const = 1", 1010, 1, 6},
    // Where something stands that no expression begins with, it is that which is wrong.
    {L"x = )", 1002, 1, 4},
    {L"x = 1 + * 2", 1002, 1, 8},
    {L"x = \"a\" & & \"b\"", 1002, 1, 10},
    {L"x = And 1", 1002, 1, 4},
    {L"x = ()", 1002, 1, 5},
    {L"x = &HG", 1002, 1, 4},
    {L"f(1,", 1023, 1, 4},
    {L"x = f(1 2)", 1006, 1, 8},
    {L"x = a(1)b", 1025, 1, 8},
    {L"x = 5 5", 1025, 1, 6},
    {L"x = a..b", 1010, 1, 6},
    {L"x = 'c", 1023, 1, 6},
    {L"Set 5 = x", 1010, 1, 4},
    {L"Set", 1010, 1, 3},
    {L"Set x =", 1023, 1, 7},
    {L"Let", 1010, 1, 3},
    {L"Let x", 1011, 1, 5},
    {L"Let x = 1", 0},
    {L"Call", 1010, 1, 4},
    {L"Call 5", 1010, 1, 5},
    {L"Call f 1", 1025, 1, 7},
    {L"Erase", 1010, 1, 5},
    {L"Erase 5", 1010, 1, 6},
    {L"Me = 1", 1037, 1, 0},
    {L"x = 1\nSet Me = x", 1037, 2, 4},
    {L"x = (Me = y)", 0},
    {L")", 1024, 1, 0},
    {L"5 = x", 1024, 1, 0},
    {L"i += 1", 1002, 1, 3},
};
const Row kBlocks[] = {
    {L"If x\nEnd If", 1017, 1, 4},
    {L"If x Then\ny = 1", 1014, 2, 5},
    {L"If x Then\nEnd", 1012, 2, 3},
    {L"If x Then y = 1 Else y = 2", 0},
    {L"If x Then y = 1 : z = 2 Else y = 2 : z = 3", 0},
    {L"If x Then y = 1 z = 2", 1025, 1, 16},
    {L"If x Then\nElseIf y\nEnd If", 1017, 2, 8},
    {L"For = 1", 1010, 1, 4},
    {L"For i 1", 1011, 1, 6},
    {L"For i = 1\nNext", 1013, 1, 9},
    {L"For i = 1 To 2", 1020, 1, 14},
    {L"For i = 1 To 2\nNext j", 1040, 2, 5},
    {L"For a.b = 1 To 2\nNext", 1040, 1, 6},
    {L"For Each x y\nNext", 1046, 1, 11},
    {L"Next", 1055, 1, 0},
    {L"Loop", 1038, 1, 0},
    {L"Do\nx = 1", 1019, 2, 5},
    {L"Do x\nLoop", 1028, 1, 3},
    {L"Do\nLoop x", 1028, 2, 5},
    {L"While x\ny = 1", 1018, 2, 5},
    {L"Select x", 1021, 1, 7},
    {L"Select Case x\ny = 1\nEnd Select", 1021, 2, 0},
    {L"Select Case x\nCase 1\nEnd", 1022, 3, 3},
    {L"With x\n.y = 1\nEnd Wit", 1029, 3, 4},
    {L"Exit Do", 1039, 1, 5},
    {L"Exit For", 1039, 1, 5},
    {L"Exit Sub", 1039, 1, 5},
    {L"Do\nExit For\nLoop", 1039, 2, 5},
    {L"Function f\nExit Sub\nEnd Function", 1039, 2, 5},
    {L"x = 1 : y = 2 : If x Then y = 3", 0},
    {L"On Error Resume", 1020, 1, 15},
    {L"On Error GoTo 1", 1002, 1, 14},
    {L"End If", 1024, 1, 0},
    {L"Wend", 1024, 1, 0},
    {L"Else", 1024, 1, 0},
    {L"Case 1", 1024, 1, 0},
    {L"Resume Next", 1024, 1, 0},
    {L"If Then\nEnd If", 1002, 1, 3},
    {L"If x y = 1", 1017, 1, 5},
    {L"If x Then y = 1 ElseIf z Then w = 2", 1025, 1, 16},
    {L"For i = 1 To 2\nIf x Then\nNext", 1055, 3, 0},
    {L"Do\nIf x Then\nLoop", 1038, 3, 0},
    {L"Do\nWith x\nLoop", 1038, 3, 0},
    {L"Do\nSelect Case x\nCase 1\nLoop", 1038, 4, 0},
    {L"Do\nFor i = 1 To 2\nLoop", 1020, 3, 0},
    {L"If x Then\nSub f\nEnd Sub\nEnd If", 1002, 2, 0},
    {L"For i = 1 To 2\nClass c\nEnd Class\nNext", 1002, 2, 0},
    {L"Do\nPublic y\nLoop", 1002, 2, 0},
    {L"For i = 1 To", 1023, 1, 12},
    {L"For i = 1 To 2 x\nNext", 1025, 1, 15},
    {L"For 5 = 1 To 2\nNext", 1010, 1, 4},
    {L"For Each\nNext", 1010, 1, 8},
    {L"For Each 5 In x\nNext", 1010, 1, 9},
    {L"For Each x In\nNext", 1023, 1, 13},
    {L"For i = 1 To 2\nFor j = 1 To 2\nNext i\nNext j", 1040, 3, 5},
    {L"Do While\nLoop", 1023, 1, 8},
    {L"Do While x\nLoop While y", 1025, 2, 5},
    {L"Do\nLoop Until", 1023, 2, 10},
    {L"While\nWend", 1023, 1, 5},
    {L"While x\nExit Do\nWend", 1039, 2, 5},
    {L"Select Case\nEnd Select", 1023, 1, 11},
    {L"Select Case x\nCase\nEnd Select", 1023, 2, 4},
    {L"Select Case x\nCase 1 To 3\nEnd Select", 1025, 2, 7},
    {L"Select Case x\nCase Is > 3\nEnd Select", 1002, 2, 5},
    {L"Select Case x\nCase Else\nCase 1\nEnd Select", 1014, 3, 0},
    {L"Select Case x\nCase 1 y = 2\nEnd Select", 0},
    {L"With", 1023, 1, 4},
    {L"With x y\nEnd With", 1025, 1, 7},
    {L"Exit", 1039, 1, 4},
    {L"Exit Property", 1039, 1, 5},
    {L"Exit While", 1039, 1, 5},
    {L"On x", 1002, 1, 3},
    {L"On Error GoTo label", 1002, 1, 14},
};
const Row kDeclarations[] = {
    {L"Dim", 1010, 1, 3},
    {L"Dim If", 1010, 1, 4},
    {L"Dim x, x", 1041, 1, 7},
    {L"Dim x(y)", 1026, 1, 6},
    {L"Const x", 1011, 1, 7},
    {L"Const x = y", 1045, 1, 10},
    {L"Const x = -1, y = \"a\"", 0},
    {L"Sub f(a, A)\nEnd Sub", 1041, 1, 9},
    {L"Sub f\nDim a, A\nEnd Sub", 1041, 2, 7},
    {L"Sub f\nEnd Function", 1016, 2, 4},
    {L"Function f\nEnd Sub", 1015, 2, 4},
    {L"Sub f\nx = 1", 1014, 2, 5},
    {L"Sub f\nSub g\nEnd Sub\nEnd Sub", 1002, 2, 0},
    {L"Dim f\nSub f\nEnd Sub", 1041, 2, 4},
    {L"Sub f\nEnd Sub\nSub F\nEnd Sub", 0},
    {L"x = 1\nOption Explicit", 1024, 2, 0},
    {L"Option Explicit\nDim x", 0},
    {L"ReDim x", 1005, 1, 7},
    {L"ReDim Preserve x(1, 2)", 0},
    {L"ReDim", 1010, 1, 5},
    {L"Dim x(-1)", 1026, 1, 6},
    {L"Dim x(1.5)", 1026, 1, 6},
    {L"Dim x(\"1\")", 1026, 1, 6},
    {L"Dim x y", 1025, 1, 6},
    {L"Dim x As Integer", 1025, 1, 6},
    {L"Dim 5x", 1031, 1, 4},
    {L"Const a = 1 + 2", 1025, 1, 12},
    {L"Const a = f(1)", 1045, 1, 10},
    {L"Const a =", 1045, 1, 9},
    {L"Const a = 1, A = 2", 1041, 1, 13},
    {L"Const a = 1\nDim a", 1041, 2, 4},
    {L"Dim a\nConst a = 1", 1041, 2, 6},
    {L"Sub f\nConst a = 1\nDim a\nEnd Sub", 1041, 3, 4},
    {L"Function f(f)\nEnd Function", 1041, 1, 9},
    {L"Function f\nDim f\nEnd Function", 1041, 2, 4},
    {L"Sub f(a)\nDim a\nEnd Sub", 1041, 2, 4},
    {L"Sub f(\nEnd Sub", 1010, 1, 6},
    {L"Sub f(a\nEnd Sub", 1006, 1, 7},
    {L"Sub f(a = 1)\nEnd Sub", 1006, 1, 8},
    {L"Sub f(Optional a)\nEnd Sub", 1006, 1, 15},
    {L"Sub f(ByVal)\nEnd Sub", 1010, 1, 11},
    {L"Sub f a\nEnd Sub", 1025, 1, 6},
    {L"Sub f() x = 1 : End Sub", 0},
    {L"Sub f : x = 1 : End Sub : y = 2", 0},
    {L"Sub f(Me)\nEnd Sub", 1010, 1, 6},
    {L"Option Base 1", 1024, 1, 7},
    {L"Option Explicit Off", 1025, 1, 16},
    {L"Public x = 1", 1025, 1, 9},
    {L"Private", 1010, 1, 7},
};
const Row kClasses[] = {
    {L"Class", 1010, 1, 5},
    {L"Class A\nx = 1\nEnd Class", 1024, 2, 0},
    {L"Class A\nDim x", 1014, 2, 5},
    {L"Class A\nEnd If", 1047, 2, 4},
    {L"Class A\nPublic x\nPrivate X\nEnd Class", 1041, 3, 8},
    {L"Class A\nProperty x\nEnd Property\nEnd Class", 1049, 2, 0},
    {L"Class A\nProperty Let x\nEnd Property\nEnd Class", 1054, 2, 13},
    {L"Class A\nProperty Get x\nEnd Sub\nEnd Class", 1050, 3, 4},
    {L"Class A\nProperty Get x(a)\nEnd Property\nProperty Let x(v)\nEnd Property\nEnd Class", 1051, 4, 13},
    {L"Class A\nPublic Default Function f\nEnd Function\nPublic Default Function g\nEnd Function\nEnd Class", 1052, 4,
     24},
    {L"Class A\nSub Class_Initialize(x)\nEnd Sub\nEnd Class", 1053, 2, 4},
    {L"Class A\nPublic Default x\nEnd Class", 1056, 2, 7},
    {L"Class A\nDefault Function f\nEnd Function\nEnd Class", 1057, 2, 0},
    {L"Class A\nPublic Default Property Let x(v)\nEnd Property\nEnd Class", 1058, 2, 7},
    {L"Property Get x\nEnd Property", 1048, 1, 0},
    {L"Class A\nEnd Class\nClass a\nEnd Class", 1041, 3, 6},
    {L"Class A\nEnd Class\nDim a", 1041, 3, 4},
    {L"Class A\nEnd Class\nSub a\nEnd Sub", 1041, 3, 4},
    {L"Class A\nSub x\nEnd Sub\nSub X\nEnd Sub\nEnd Class", 1041, 4, 4},
    {L"Class A\nSub x\nEnd Sub\nDim x\nEnd Class", 1041, 4, 4},
    {L"Class A\nDim x\nFunction x\nEnd Function\nEnd Class", 1041, 3, 9},
    {L"Class A\nProperty Get x\nEnd Property\nProperty Get x\nEnd Property\nEnd Class", 1041, 4, 13},
    {L"Class A\nProperty Get x\nEnd Property\nFunction x\nEnd Function\nEnd Class", 1041, 4, 9},
    {L"Class A\nProperty Get x(a, b)\nEnd Property\nProperty Set x(v)\nEnd Property\nEnd Class", 1051, 4, 13},
    {L"Class A\nSub Class_Terminate(x)\nEnd Sub\nEnd Class", 1053, 2, 4},
    {L"Class A\nPrivate Default Function f\nEnd Function\nEnd Class", 1057, 2, 8},
    {L"Class A\nPublic Default Property Set x(v)\nEnd Property\nEnd Class", 1058, 2, 7},
    {L"Class A\nPublic Property x\nEnd Property\nEnd Class", 1049, 2, 7},
    {L"Class A\nClass B\nEnd Class\nEnd Class", 1024, 2, 0},
    {L"Class A\nConst k = 1\nEnd Class", 1024, 2, 0},
    {L"Class A x\nEnd Class", 1025, 1, 8},
    {L"Public Default Function x\nEnd Function", 1048, 1, 7},
    {L"Sub f\nClass A\nEnd Class\nEnd Sub", 1002, 2, 0},
    {L"Class A\nPublic x, y(3)\nPublic Default Property Get z(i)\nEnd Property\nEnd Class", 0},
};

INSTANTIATE_TEST_SUITE_P(Tokens, CompileErrors, testing::ValuesIn(kTokens));
INSTANTIATE_TEST_SUITE_P(Expressions, CompileErrors, testing::ValuesIn(kExpressions));
INSTANTIATE_TEST_SUITE_P(Blocks, CompileErrors, testing::ValuesIn(kBlocks));
INSTANTIATE_TEST_SUITE_P(Declarations, CompileErrors, testing::ValuesIn(kDeclarations));
INSTANTIATE_TEST_SUITE_P(Classes, CompileErrors, testing::ValuesIn(kClasses));

// The public list has more numbers than these: what they tell of, no script can do.
constexpr int kNeverRaised[] = {1003, 1027, 1034, 1042, 1043};

TEST(CompileErrorNumbers, AllHaveARowHere) {
  std::set<int> shown = {1001, 1030};  // by tests of their own
  const auto add = [&](const auto& rows) {
    for (const Row& row : rows) shown.insert(row.number);
  };
  add(kTokens);
  add(kExpressions);
  add(kBlocks);
  add(kDeclarations);
  add(kClasses);
  for (int number = 1001; number <= 1058; ++number) {
    const bool is_listed = !words_of(static_cast<Fault>(number)).empty();
    const bool is_raised = is_listed && std::ranges::find(kNeverRaised, number) == std::end(kNeverRaised);
    EXPECT_EQ(is_raised, shown.contains(number)) << number;
  }
}

std::wstring repeated(std::wstring_view piece, std::size_t count) {
  std::wstring text;
  for (std::size_t i = 0; i < count; ++i) text += piece;
  return text;
}

// A worker has a large stack; a test has what every thread has.
TEST(HostileScripts, AreRefusedWhereTheyAreNestedTooDeep) {
  const std::wstring texts[] = {
      L"x = " + repeated(L"(", 100'000),
      L"x = " + repeated(L"-", 100'000) + L"1",
      L"x = " + repeated(L"Not ", 100'000) + L"1",
      L"x = " + repeated(L"1 & ", 100'000) + L"1",
      L"x = a" + repeated(L".b", 100'000),
      L"x = " + repeated(L"f(", 100'000),
      L"x = a" + repeated(L"(1)", 100'000),
      repeated(L"If x Then\n", 100'000),
      repeated(L"If x Then ", 100'000),
      repeated(L"For i = 1 To 2\n", 100'000),
      repeated(L"Do\n", 100'000),
      repeated(L"While x\n", 100'000),
      repeated(L"With x\n", 100'000),
      repeated(L"Select Case x\nCase 1\n", 100'000),
      L"Const x = " + repeated(L"(", 100'000),
      L"Const x = " + repeated(L"-", 100'000) + L"1",
  };
  for (const std::wstring& text : texts) {
    try {
      compile({.text = text});
      ADD_FAILURE() << narrow(text.substr(0, 20));
    } catch (const CompileError& error) {
      EXPECT_EQ(Fault::out_of_memory, error.fault) << narrow(text.substr(0, 20));
    }
  }
}

TEST(HostileScripts, HaveNamesOfAtMost255Characters) {
  EXPECT_NO_THROW(compile({.text = repeated(L"a", 255) + L" = 1"}));
  for (const std::wstring& text : {L"x = " + repeated(L"a", 256), L"x = [" + repeated(L"a", 256) + L"]"}) {
    try {
      compile({.text = text});
      ADD_FAILURE();
    } catch (const CompileError& error) {
      EXPECT_EQ(Fault::identifier_too_long, error.fault);
      EXPECT_EQ(4, error.column);
    }
  }
}

TEST(HostileScripts, OfManyPartsAreCompiled) {
  const std::wstring texts[] = {
      L"x = \"" + repeated(L"a", 2'000'000) + L"\"",
      repeated(L"x = 1 : ", 100'000),
      L"f " + repeated(L"1, ", 100'000) + L"1",
      L"Select Case x\n" + repeated(L"Case 1\n", 20'000) + L"End Select",
      L"If x Then\n" + repeated(L"ElseIf y Then\n", 20'000) + L"End If",
  };
  for (const std::wstring& text : texts) EXPECT_NO_THROW(compile({.text = text})) << narrow(text.substr(0, 20));
  std::wstring classes;
  for (int i = 0; i < 5000; ++i) {
    classes += L"Class c" + std::to_wstring(i) + L"\nPublic x\nSub f(a)\na = x\nEnd Sub\nEnd Class\nSub s" +
               std::to_wstring(i) + L"\nEnd Sub\n";
  }
  EXPECT_NO_THROW(compile({.text = classes}));
}

}  // namespace
}  // namespace zelto::vbscript
