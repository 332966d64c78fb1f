// From one kind of value to another, and what a value is told to be. Expected values are those of the public language
// reference ("Functions", VBScript).
#include "zelto/script/vbscript/library_fixture.h"

namespace test {
namespace {

using VbConversions = VbLibraryTest;

TEST_F(VbConversions, RoundToTheEvenNeighbour) {
  expect({
      {L"cint(0.5)", "Integer 0"},       {L"cint(1.5)", "Integer 2"},       {L"cint(2.5)", "Integer 2"},
      {L"cint(-0.5)", "Integer 0"},      {L"cint(-1.5)", "Integer -2"},     {L"cint('2.6')", "Integer 3"},
      {L"cint(true)", "Integer -1"},     {L"cint(undefined)", "Integer 0"}, {L"cint(32767.4)", "Integer 32767"},
      {L"cint(32767.5)", "error 6"},     {L"cint('x')", "error 13"},        {L"cint('')", "error 13"},
      {L"cint(null)", "error 94"},       {L"cint(nothing)", "error 91"},    {L"clng(25427.45)", "Long 25427"},
      {L"clng(25427.55)", "Long 25428"}, {L"clng(2147483648)", "error 6"},  {L"cbyte(125.5678)", "Byte 126"},
      {L"cbyte(255.5)", "error 6"},      {L"cbyte(-1)", "error 6"},
  });
}

TEST_F(VbConversions, MakeOtherNumbers) {
  expect({
      {L"cdbl('1.25')", "Double 1.25"},
      {L"cdbl(5)", "Double 5"},
      {L"cdbl(' 12 ')", "Double 12"},
      {L"cdbl('&H10')", "Double 16"},
      {L"cdbl('$1,234.50')", "Double 1234.5"},
      {L"csng(75.3421115)", "Single 75.34211"},
      {L"csng(1e40)", "error 6"},
      {L"ccur(543.214588 * 2)", "Currency 1086.4292"},
      {L"ccur('922337203685477.5807')", "Currency 922337203685477.5807"},
      {L"ccur(1e15)", "error 6"},
      {L"cbool(0)", "Boolean False"},
      {L"cbool('true')", "Boolean True"},
      {L"cbool('2')", "Boolean True"},
      {L"cbool('x')", "error 13"},
      {L"cdate('2024-02-29')", "Date 2024-02-29"},
      {L"cdate('February 12, 1969')", "Date 1969-02-12"},
      {L"cdate('4:35:47 PM')", "Date 16:35:47"},
      {L"cdate(1.5)", "Date 1899-12-31 12:00:00"},
      {L"cdate('no date')", "error 13"},
      {L"cdate(null)", "error 94"},
      {L"cdate(3000000)", "error 6"},
  });
}

TEST_F(VbConversions, WriteNumbersWithFifteenDigits) {
  expect({
      {L"cstr(437.324)", "String 437.324"},
      {L"cstr(0.1 + 0.2)", "String 0.3"},
      {L"cstr(1 / 3)", "String 0.333333333333333"},
      {L"cstr(1 / 30)", "String 3.33333333333333E-02"},
      {L"cstr(0.00001)", "String 0.00001"},
      {L"cstr(1e15)", "String 1E+15"},
      {L"cstr(999999999999999)", "String 999999999999999"},
      {L"cstr(-123456789012345678)", "String -1.23456789012346E+17"},
      {L"cstr(1e-300)", "String 1E-300"},
      {L"cstr(cdbl(5))", "String 5"},
      {L"cstr(ccur('1.50'))", "String 1.5"},
      {L"cstr(ccur('-0.0001'))", "String -0.0001"},
      {L"cstr(true)", "String True"},
      {L"cstr(undefined)", "String "},
      {L"cstr(null)", "error 94"},
      {L"cstr(array())", "error 13"},
  });
}

TEST_F(VbConversions, TellTheKindOfAValue) {
  expect({
      {L"array(vartype(undefined), vartype(null), vartype(1), vartype(32768), vartype(1.5), vartype('a'))",
       "Variant() 0|1|2|3|5|8"},
      {L"array(vartype(csng(1)), vartype(ccur(1)), vartype(now()), vartype(nothing), vartype(true), vartype(cbyte(1)))",
       "Variant() 4|6|7|9|11|17"},
      {L"array(vartype(array()), vartype(clng(1)), vartype(cdbl(1)), vartype(new Uint8Array(2)))",
       "Variant() 8204|3|5|8209"},
      {L"array(typename(nothing), typename(regexp()), typename(missing), typename(chrb(1)))",
       "Variant() Nothing|IRegExp2|Error|String"},
      {L"array(isarray(array()), isarray(1), isempty(undefined), isempty(''), isnull(null), isnull(undefined))",
       "Variant() True|False|True|False|True|False"},
      {L"array(isobject(nothing), isobject(1), isobject(o), isobject(array()))", "Variant() True|False|True|False"},
      {L"array(isnumeric(1), isnumeric('1.5'), isnumeric('x'), isnumeric(undefined), isnumeric(null), isnumeric(true))",
       "Variant() True|True|False|True|False|True"},
      {L"array(isnumeric(now()), isnumeric(ccur(1)), isnumeric(''), isnumeric(nothing))",
       "Variant() False|True|False|False"},
      {L"array(isdate(now()), isdate('2024-01-01'), isdate('x'), isdate(1), isdate(null))",
       "Variant() True|True|False|False|False"},
  });
}

}  // namespace
}  // namespace test
