// Functions of texts, bytes, numbers and arrays. Expected values are those of the public language reference
// ("Functions", VBScript), where it has an example, and calculated by hand elsewhere.
#include "zelto/script/vbscript/library_fixture.h"

namespace test {
namespace {

using VbFunctions = VbLibraryTest;

TEST_F(VbFunctions, CutText) {
  expect({
      {L"len('VBSCRIPT')", "Integer 8"},
      {L"len(123)", "Integer 3"},
      {L"len(undefined)", "Integer 0"},
      {L"len(null)", "Null"},
      {L"left('VBScript', 3)", "String VBS"},
      {L"left('ab', 5)", "String ab"},
      {L"left('ab', 0)", "String "},
      {L"left('ab', -1)", "error 5"},
      {L"left(null, 1)", "Null"},
      {L"left(12345, 2)", "String 12"},
      {L"right('AnyString', 1)", "String g"},
      {L"right('AnyString', 20)", "String AnyString"},
      {L"mid('VB Script is fun!', 4, 6)", "String Script"},
      {L"mid('abc', 2)", "String bc"},
      {L"mid('abc', 5)", "String "},
      {L"mid('abc', 0)", "error 5"},
      {L"mid('abc', 1, -1)", "error 5"},
      {L"cat(ltrim('   vbscript '), '|')", "String vbscript |"},
      {L"cat(rtrim('   vbscript '), '|')", "String    vbscript|"},
      {L"cat(trim('   vbscript '), '|')", "String vbscript|"},
      {L"trim(null)", "Null"},
  });
}

TEST_F(VbFunctions, FindText) {
  expect({
      {L"instr(4, 'XXpXXpXXPXXP', 'P', 1)", "Integer 6"},
      {L"instr(1, 'XXpXXpXXPXXP', 'P', 0)", "Integer 9"},
      {L"instr('XXpXXpXXPXXP', 'P')", "Integer 9"},
      {L"instr(1, 'XXpXXpXXPXXP', 'W')", "Integer 0"},
      {L"instr('abc', '')", "Integer 1"},
      {L"instr('', 'a')", "Integer 0"},
      {L"instr(9, 'abc', 'a')", "Integer 0"},
      {L"instr(0, 'abc', 'a')", "error 5"},
      {L"instr(null, 'a')", "Null"},
      {L"instr(null, 'abc', 'a')", "error 94"},
      {L"instr('abc')", "error 450"},
      {L"instrrev('XXpXXpXXPXXP', 'P', 10, 0)", "Integer 9"},
      {L"instrrev('XXpXXpXXPXXP', 'P', -1, 1)", "Integer 12"},
      {L"instrrev('XXpXXpXXPXXP', 'P', 8)", "Integer 0"},
      {L"instrrev('abc', '')", "Integer 3"},
      {L"instrrev('abc', 'a', 0)", "error 5"},
      {L"strcomp('ABCD', 'abcd', 1)", "Integer 0"},
      {L"strcomp('ABCD', 'abcd', 0)", "Integer -1"},
      {L"strcomp('abcd', 'ABCD')", "Integer 1"},
      {L"strcomp(null, 'a')", "Null"},
  });
}

TEST_F(VbFunctions, ReplaceAndSplitText) {
  expect({
      {L"replace('XXpXXPXXp', 'p', 'Y')", "String XXYXXPXXY"},
      {L"replace('XXpXXPXXp', 'p', 'Y', 3, -1, 1)", "String YXXYXXY"},
      {L"replace('aaa', 'a', 'b', 1, 2)", "String bba"},
      {L"replace('a.a', '.', '$&')", "String a$&a"},
      {L"replace('abc', '', 'x')", "String abc"},
      {L"replace('abc', 'b', '')", "String ac"},
      {L"replace(null, 'b', '')", "error 94"},
      {L"replace('abc', 'b', 'x', 9)", "String "},
      {L"replace('abc', 'b', 'x', 0)", "error 5"},
      {L"split('VBScriptXisXfun!', 'x', -1, 1)", "Variant() VBScript|is|fun!"},
      {L"split('a b c')", "Variant() a|b|c"},
      {L"split('a,b,c', ',', 2)", "Variant() a|b,c"},
      {L"ubound(split('', ','))", "Integer -1"},
      {L"split('abc', '')", "Variant() abc"},
      {L"join(array('Mr.', 'John', 'Doe', 'III'))", "String Mr. John Doe III"},
      {L"join(array(1, undefined, true), ',')", "String 1,,True"},
      {L"filter(array('Sunday', 'Monday', 'Tuesday'), 'Mon')", "Variant() Monday"},
      {L"filter(array('Sunday', 'Monday', 'Tuesday'), 'mon', false, 1)", "Variant() Sunday|Tuesday"},
      {L"strreverse('VBScript')", "String tpircSBV"},
      {L"string(5, '*')", "String *****"},
      {L"string(3, 42)", "String ***"},
      {L"string(3, 'ABC')", "String AAA"},
      {L"cat(space(2), 'x')", "String   x"},
      {L"lcase('VBScript')", "String vbscript"},
      {L"ucase('VBScript')", "String VBSCRIPT"},
      {L"escape('a b+\\u20AC\\u00E4')", "String a%20b+%u20AC%E4"},
      {L"unescape('a%20b%u20AC%E4%')", "String a b\xE2\x82\xAC\xC3\xA4%"},
  });
}

TEST_F(VbFunctions, TellTheCodesOfCharacters) {
  expect({
      {L"asc('A')", "Integer 65"},
      {L"asc('Apple')", "Integer 65"},
      {L"asc('')", "error 5"},
      {L"asc('\\u20AC')", "Integer 128"},
      {L"ascw('\\u20AC')", "Integer 8364"},
      {L"ascw('\\uFFFF')", "Integer -1"},
      {L"chr(65)", "String A"},
      {L"ascw(chr(128))", "Integer 8364"},
      {L"chr(256)", "error 5"},
      {L"ascw(chrw(8364))", "Integer 8364"},
      {L"ascw(chrw(-1))", "Integer -1"},
  });
}

TEST_F(VbFunctions, WorkOnBytes) {
  expect({
      {L"lenb('abc')", "Integer 6"},
      {L"lenb(chrb(65))", "Integer 1"},
      {L"lenb(cat(chrb(65), chrb(66)))", "Integer 2"},
      {L"ascb('A')", "Byte 65"},
      {L"ascb(midb('A', 2, 1))", "Byte 0"},
      {L"cat(chrb(65), chrb(0))", "String A"},
      {L"lenb(cat(cat(chrb(65), 'x'), chrb(1)))", "Integer 4"},
      {L"instrb('abc', chrb(98))", "Integer 3"},
      {L"instrb(4, 'abc', chrb(98))", "Integer 0"},
      {L"leftb('abc', 2)", "String a"},
      {L"lenb(rightb('abc', 3))", "Integer 3"},
      {L"midb('abc', 3, 2)", "String b"},
      {L"lenb(new Uint8Array([1, 2, 3]))", "Integer 3"},
      {L"ascb(midb(new Uint8Array([1, 2, 3]), 2, 1))", "Byte 2"},
      {L"instrb(1, new Uint8Array([13, 10, 65, 66]), cat(chrb(65), chrb(66)))", "Integer 3"},
      {L"instrb(new Uint8Array([65, 67, 65, 66]), cat(chrb(65), chrb(66)))", "Integer 3"},
      {L"chrb(256)", "error 6"},
      {L"lenb(null)", "Null"},
  });
}

TEST_F(VbFunctions, CalculateWithNumbers) {
  expect({
      {L"abs(-50.3)", "Double 50.3"},
      {L"abs('-5')", "Double 5"},
      {L"abs(null)", "Null"},
      {L"abs(true)", "Integer 1"},
      {L"int(99.8)", "Double 99"},
      {L"int(-99.8)", "Double -100"},
      {L"fix(-99.2)", "Double -99"},
      {L"int(5)", "Integer 5"},
      {L"int(ccur('-1.5'))", "Currency -2"},
      {L"sgn(12)", "Integer 1"},
      {L"sgn(-2.4)", "Integer -1"},
      {L"sgn(0)", "Integer 0"},
      {L"sqr(4)", "Double 2"},
      {L"sqr(-4)", "error 5"},
      {L"log(0)", "error 5"},
      {L"exp(0)", "Double 1"},
      {L"exp(1000)", "error 6"},
      {L"mul(4, atn(1))", "Double 3.14159265358979"},
      {L"round(3.14159, 2)", "Double 3.14"},
      {L"round(2.5)", "Double 2"},
      {L"round(3.5)", "Double 4"},
      {L"round(-2.5)", "Double -2"},
      {L"round(5)", "Integer 5"},
      {L"round(2.5, -1)", "error 5"},
      {L"hex(459)", "String 1CB"},
      {L"hex(-1)", "String FFFF"},
      {L"hex(clng(-1))", "String FFFFFFFF"},
      {L"hex(15.5)", "String 10"},
      {L"oct(459)", "String 713"},
      {L"hex(3000000000)", "error 6"},
      {L"rgb(255, 128, 1)", "Long 98559"},
      {L"rgb(300, 0, 0)", "Integer 255"},
      {L"rgb(-1, 0, 0)", "error 5"},
  });
}

// The first numbers of the generator, as its documentation tells them.
TEST_F(VbFunctions, DrawTheSameNumbersInEachPage) {
  const char* const first = "Variant() 0.7055475|0.533424|0.5795186|0.2895625|0.301948";
  EXPECT_EQ(first, shown(L"array(rnd(), rnd(), rnd(), rnd(), rnd())"));
  EXPECT_EQ(first, shown(L"array(rnd(), rnd(), rnd(), rnd(), rnd())"));
  expect({
      {L"(rnd(), eq(rnd(0), rnd(0)))", "Boolean True"},
      {L"eq(rnd(-3), rnd(-3))", "Boolean True"},
      {L"(rnd(-1), randomize(7), rnd(), eq((rnd(-1), randomize(7), rnd()), (rnd(-1), randomize(7), rnd())))",
       "Boolean True"},
      {L"rnd('x')", "error 13"},
  });
}

TEST_F(VbFunctions, KeepArrays) {
  expect({
      {L"ubound(dim(true, 2, 3), 2)", "Integer 3"},
      {L"lbound(dim(true, 2, 3))", "Integer 0"},
      {L"ubound(dim(false))", "error 9"},
      {L"ubound(dim(true, 2), 2)", "error 9"},
      {L"ubound(1)", "error 13"},
      {L"ix(array(1, 2, 3), 1)", "Integer 2"},
      {L"ix(array(1, 2, 3), '1')", "Integer 2"},
      {L"ix(array(1, 2, 3), 1.5)", "Integer 3"},
      {L"ix(array(1, 2, 3), 3)", "error 9"},
      {L"ix(array(1, 2, 3), -1)", "error 9"},
      {L"ix(dim(true, 2, 2), 1)", "error 9"},
      {L"ix1(5, 1)", "error 13"},
      {L"(() => { const a = dim(true, 1, 2); putix(a, 7, 1, 2); return ix(a, 1, 2); })()", "Integer 7"},
      {L"(() => { const a = array(1), b = val(a); putix(b, 2, 0); return ix(a, 0); })()", "Integer 1"},
      {L"(() => { const a = array(array(1)), b = val(a); putix(ix(b, 0), 2, 0); return ix(ix(a, 0), 0); })()",
       "Integer 1"},
      {L"redim(array(1, 2, 3), true, 1)", "Variant() 1|2"},
      {L"redim(array(1, 2), true, 3)", "Variant() 1|2||"},
      {L"redim(array(1, 2), false, 1)", "Variant() |"},
      {L"redim(dim(true, 2), false, 1)", "error 10"},
      {L"redim(undefined, true, 1)", "Variant() |"},
      {L"redim(dim(false), false, -2)", "error 9"},
      {L"(() => { const a = redim(undefined, false, 1, 1); putix(a, 'x', 1, 1); return ix(redim(a, true, 1, 4), 1, 1); "
       L"})()",
       "String x"},
      {L"(() => { const a = redim(undefined, false, 1, 1); return redim(a, true, 4, 1); })()", "error 9"},
      {L"ubound(erase(array(1, 2)))", "error 9"},
      {L"(() => { const a = dim(true, 1); putix(a, 3, 0); return erase(a); })()", "Variant() |"},
      {L"setix(array(1), 5, 0)", "error 424"},
      {L"redim(undefined, false, 100000, 100000)", "error 7"},
      {L"(() => { const a = dim(true, 1, 1); let n = 0; for (const i of [0, 1]) for (const j of [0, 1])"
       L" putix(a, n++, i, j); return join(array(...each(a)), ''); })()",
       "String 0213"},
      {L"each(5)", "error 451"},
      {L"each(nothing)", "error 91"},
  });
}

TEST_F(VbFunctions, AreRefusedWhereThereIsNoUser) {
  expect({{L"msgbox('x')", "error 70"},
          {L"inputbox('x')", "error 70"},
          {L"getobject('x')", "error 429"},
          {L"scriptengine()", "String VBScript"}});
}

}  // namespace
}  // namespace test
