// Each error with its number and place. The numbers and words are those of the public list of compilation errors.
#include <gtest/gtest.h>

#include <string>

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
    {L"x = * 2", 1023, 1, 4},
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
};
const Row kBlocks[] = {
    {L"If x\nEnd If", 1017, 1, 4},
    {L"If x Then\ny = 1", 1014, 2, 5},
    {L"If x Then\nEnd", 1012, 2, 3},
    {L"If x Then y = 1 Else y = 2", 0},
    {L"If x Then y = 1 : z = 2 Else y = 2 : z = 3", 0},
    {L"If x Then y = 1 z = 2", 1025, 1, 16},
    {L"If x Then\nElseIf y\nEnd If", 1017, 2, 8},
    {L"For = 1", 1023, 1, 4},
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
    {L"Class A\nPublic x, y(3)\nPublic Default Property Get z(i)\nEnd Property\nEnd Class", 0},
};

INSTANTIATE_TEST_SUITE_P(Tokens, CompileErrors, testing::ValuesIn(kTokens));
INSTANTIATE_TEST_SUITE_P(Expressions, CompileErrors, testing::ValuesIn(kExpressions));
INSTANTIATE_TEST_SUITE_P(Blocks, CompileErrors, testing::ValuesIn(kBlocks));
INSTANTIATE_TEST_SUITE_P(Declarations, CompileErrors, testing::ValuesIn(kDeclarations));
INSTANTIATE_TEST_SUITE_P(Classes, CompileErrors, testing::ValuesIn(kClasses));

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
