// Functions of numbers, and how numbers are formatted. Values are those of the public language reference and its
// examples; others were calculated by hand or another program.
#include "zelto/site/vbscript_fixture.h"

namespace {

using test::VbScriptRow;

class VbScriptNumbers : public test::VbScriptFixture {};

TEST_F(VbScriptNumbers, AreCalculated) {
  constexpr VbScriptRow kRows[] = {
      {"Abs(-1)", "Integer 1"},
      {"Abs(-50.3)", "Double 50.3"},
      {"Abs(\"-3\")", "Double 3"},
      {"Abs(Null)", "Null"},
      {"Abs(v)", "Integer 0"},
      {"Abs(\"a\")", "error 13"},
      {"Abs(CCur(-1.5))", "Currency 1.5"},
      {"Abs(True)", "Integer 1"},
      {"Atn(1) * 4", "Double 3.14159265358979"},
      {"Atn(Null)", "Null"},
      {"Cos(1.3)", "Double 0.267498828624587"},
      {"Sin(1.3)", "Double 0.963558185417193"},
      {"Tan(1.3)", "Double 3.60210244796798"},
      {"Sin(\"a\")", "error 13"},
      {"Exp(1.3)", "Double 3.66929666761924"},
      {"Exp(0)", "Double 1"},
      {"Exp(710)", "error 6"},
      {"Log(10) / Log(10)", "Double 1"},
      {"Log(0)", "error 5"},
      {"Log(-1)", "error 5"},
      {"Log(1)", "Double 0"},
      {"Sqr(4)", "Double 2"},
      {"Sqr(23)", "Double 4.79583152331272"},
      {"Sqr(0)", "Double 0"},
      {"Sqr(-4)", "error 5"},
      {"Sgn(12)", "Integer 1"},
      {"Sgn(-2.4)", "Integer -1"},
      {"Sgn(0)", "Integer 0"},
      {"Sgn(Empty)", "Integer 0"},
      {"Sgn(Null)", "Null"},
      {"Int(99.8)", "Double 99"},
      {"Fix(99.2)", "Double 99"},
      {"Int(-99.8)", "Double -100"},
      {"Fix(-99.8)", "Double -99"},
      {"Int(-99.2)", "Double -100"},
      {"Fix(-99.2)", "Double -99"},
      {"Int(Null)", "Null"},
      {"Fix(Null)", "Null"},
      {"Int(\"5.5\")", "Double 5"},
      {"Int(CCur(-1.5))", "Currency -2"},
      {"Int(5)", "Integer 5"},
      {"Round(3.14159, 2)", "Double 3.14"},
      {"Round(2.5)", "Double 2"},
      {"Round(3.5)", "Double 4"},
      {"Round(-2.5)", "Double -2"},
      {"Round(5)", "Integer 5"},
      {"Round(0.125, 2)", "Double 0.12"},
      {"Round(1, -1)", "error 5"},
      {"Round(\"a\")", "error 13"},
      {"Round(CCur(2.345), 2)", "Currency 2.34"},
      {"TypeName(Rnd)", "String Single"},
      {"TypeName(Rnd(1))", "String Single"},
      {"Rnd >= 0 And Rnd < 1", "Boolean True"},
      {"Rnd(-5) = Rnd(0)", "Boolean True"},
      {"RGB(1, 2, 3)", "Long 197121"},
      {"RGB(255, 255, 255)", "Long 16777215"},
      {"RGB(300, 0, 0)", "Integer 255"},
      {"RGB(-1, 0, 0)", "error 5"},
  };
  expect_values(kRows);
}

TEST_F(VbScriptNumbers, AreFormatted) {
  constexpr VbScriptRow kRows[] = {
      {"FormatNumber(1234.567)", "String 1,234.57"},
      {"FormatNumber(-0.5, 1, vbFalse)", "String -.5"},
      {"FormatNumber(-0.5, 1, vbTrue)", "String -0.5"},
      {"FormatNumber(-12, 2, , vbTrue)", "String (12.00)"},
      {"FormatNumber(1234567, 0, , , vbFalse)", "String 1234567"},
      {"FormatNumber(1234567, 0, vbUseDefault, vbUseDefault, vbUseDefault)", "String 1,234,567"},
      {"FormatNumber(\"12.5\")", "String 12.50"},
      {"FormatNumber(Empty)", "String 0.00"},
      {"FormatNumber(\"abc\")", "error 13"},
      {"FormatNumber(1, -2)", "error 5"},
      {"FormatNumber(0.005, 2)", "String 0.01"},
      {"FormatNumber(2.5, 0)", "String 3"},
      {"FormatCurrency(1000)", "String $1,000.00"},
      {"FormatCurrency(-1000)", "String ($1,000.00)"},
      {"FormatCurrency(-1000, 0, , vbFalse)", "String -$1,000"},
      {"FormatCurrency(\"x\")", "error 13"},
      {"FormatPercent(2 / 32)", "String 6.25%"},
      {"FormatPercent(1.5, 0)", "String 150%"},
      {"FormatPercent(-0.5, 0, , vbTrue)", "String (50%)"},
      {"FormatPercent(\"x\")", "error 13"},
  };
  expect_values(kRows);
}

}  // namespace
