// Operators with operands of each kind. Values are those of the public language reference: its tables of result types,
// of logic with Null, and its examples.
#include "zelto/site/vbscript_fixture.h"

namespace {

using test::VbScriptRow;

class VbScriptOperators : public test::VbScriptFixture {};

TEST_F(VbScriptOperators, Calculate) {
  constexpr VbScriptRow kRows[] = {
      {"1 + 1", "Integer 2"},
      {"32767 + 1", "Long 32768"},
      {"2147483647 + 1", "Double 2147483648"},
      {"1 + 1.5", "Double 2.5"},
      {"\"1\" + 1", "Double 2"},
      {"\"1\" + \"1\"", "String 11"},
      {"\"a\" + 1", "error 13"},
      {"1 + Null", "Null"},
      {"1 + v", "Integer 1"},
      {"v + v", "Integer 0"},
      {"\"a\" + v", "String a"},
      {"True + True", "Integer -2"},
      {"#1/1/2000# + 1", "Date 1/2/2000"},
      {"#1/3/2000# - #1/1/2000#", "Double 2"},
      {"1 + Nothing", "error 91"},
      {"1 + Array(1)", "error 13"},
      {"5 - \"2\"", "Double 3"},
      {"\"a\" - 1", "error 13"},
      {"Null - 1", "Null"},
      {"3 * \"4\"", "Double 12"},
      {"300 * 200", "Long 60000"},
      {"65536 * 65536", "Double 4294967296"},
      {"CByte(200) * CByte(2)", "Integer 400"},
      {"CCur(2) * 1.5", "Double 3"},
      {"CCur(2) * 3", "Currency 6"},
      {"5 / 2", "Double 2.5"},
      {"6 / 3", "Double 2"},
      {"1 / 0", "error 11"},
      {"0 / 0", "error 6"},
      {"7 \\ 2", "Integer 3"},
      {"-7 \\ 2", "Integer -3"},
      {"7.6 \\ 2", "Long 4"},
      {"7 \\ 0", "error 11"},
      {"7 \\ 0.4", "error 11"},
      {"\"9\" \\ 2", "Long 4"},
      {"Null \\ 2", "Null"},
      {"3000000000 \\ 2", "error 6"},
      {"19 Mod 6.7", "Long 5"},
      {"12 Mod 4.3", "Long 0"},
      {"12.6 Mod 5", "Long 3"},
      {"-7 Mod 3", "Integer -1"},
      {"7 Mod 0", "error 11"},
      {"Null Mod 2", "Null"},
      {"2 ^ 10", "Double 1024"},
      {"(-8) ^ 2", "Double 64"},
      {"(-8) ^ 0.5", "error 5"},
      {"0 ^ -1", "error 5"},
      {"10 ^ 400", "error 6"},
      {"Null ^ 2", "Null"},
      {"-\"5\"", "Double -5"},
      {"-Null", "Null"},
      {"-v", "Integer 0"},
      {"-True", "Integer 1"},
      {"-CByte(5)", "Integer -5"},
  };
  expect_values(kRows);
}

TEST_F(VbScriptOperators, JoinTextAndBits) {
  constexpr VbScriptRow kRows[] = {
      {"\"a\" & 1", "String a1"},
      {"Null & \"a\"", "String a"},
      {"Null & Null", "Null"},
      {"v & v & \".\"", "String ."},
      {"1 & 2", "String 12"},
      {"#1/1/2000# & \"\"", "String 1/1/2000"},
      {"\"a\" & Array(1)", "error 13"},
      {"Not 5", "Integer -6"},
      {"Not True", "Boolean False"},
      {"Not Null", "Null"},
      {"Not \"1\"", "Long -2"},
      {"Not \"a\"", "error 13"},
      {"Not v", "Integer -1"},
      {"Not 2.6", "Long -4"},
      {"True And False", "Boolean False"},
      {"5 And 3", "Integer 1"},
      {"5.4 And 3", "Long 1"},
      {"True And 6", "Integer 6"},
      {"Null And False", "Boolean False"},
      {"Null And True", "Null"},
      {"Null And 0", "Integer 0"},
      {"v And 1", "Integer 0"},
      {"True Or Null", "Boolean True"},
      {"False Or Null", "Null"},
      {"5 Or 3", "Integer 7"},
      {"Null Or Null", "Null"},
      {"5 Xor 3", "Integer 6"},
      {"True Xor True", "Boolean False"},
      {"Null Xor 1", "Null"},
      {"True Eqv True", "Boolean True"},
      {"5 Eqv 3", "Integer -7"},
      {"Null Eqv True", "Null"},
      {"True Imp False", "Boolean False"},
      {"True Imp Null", "Null"},
      {"False Imp Null", "Boolean True"},
      {"Null Imp True", "Boolean True"},
      {"Null Imp False", "Null"},
      {"Null Imp Null", "Null"},
      {"5 Imp 3", "Integer -5"},
      {"3000000000 And 1", "error 6"},
  };
  expect_values(kRows);
}

TEST_F(VbScriptOperators, Compare) {
  constexpr VbScriptRow kRows[] = {
      {"1 = 1", "Boolean True"},
      {"1 = \"1\"", "Boolean True"},
      {"\"a\" < \"b\"", "Boolean True"},
      {"\"B\" < \"a\"", "Boolean True"},
      {"\"\" = v", "Boolean True"},
      {"0 = v", "Boolean True"},
      {"Null = Null", "Null"},
      {"1 <> 2", "Boolean True"},
      {"2 >= 2", "Boolean True"},
      {"2 =< 2", "Boolean True"},
      {"(2 => 3)", "Boolean False"},
      {"#1/1/2000# < #1/2/2000#", "Boolean True"},
      {"Nothing Is Nothing", "Boolean True"},
      {"Err Is Nothing", "Boolean False"},
      {"1 Is Nothing", "error 424"},
      {"Err = 0", "Boolean True"},
      {"Array(1) = 1", "error 13"},
  };
  expect_values(kRows);
}

TEST_F(VbScriptOperators, TakeLiterals) {
  constexpr VbScriptRow kRows[] = {
      {"&HFF", "Integer 255"}, {"&HFFFF", "Integer -1"}, {"&HFFFF&", "Long 65535"},
      {"&O17", "Integer 15"},  {"1E3", "Double 1000"},   {".5", "Double 0.5"},
  };
  expect_values(kRows);
}

}  // namespace
