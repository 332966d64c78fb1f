// Each operator with each kind of values. Expected values are those of the public language reference ("Operators",
// VBScript), and sums by hand.
#include "zelto/script/vbscript/library_fixture.h"

namespace test {
namespace {

using VbOperators = VbLibraryTest;

TEST_F(VbOperators, AddNumbersOfTheWiderKind) {
  expect({
      {L"add(1, 2)", "Integer 3"},
      {L"add(32767, 1)", "Long 32768"},
      {L"add(2147483647, 1)", "Double 2147483648"},
      {L"add(1.5, 1.5)", "Double 3"},
      {L"add(cbyte(200), cbyte(55))", "Byte 255"},
      {L"add(cbyte(200), cbyte(56))", "Integer 256"},
      {L"add(clng(1), 1)", "Long 2"},
      {L"add(csng(1.5), 1)", "Single 2.5"},
      {L"add(csng(1.5), clng(1))", "Double 2.5"},
      {L"add(ccur(1.5), 0.25)", "Currency 1.75"},
      {L"add(dateserial(2024, 2, 28), 2)", "Date 2024-03-01"},
      {L"add(true, true)", "Integer -2"},
      {L"add(undefined, undefined)", "Integer 0"},
      {L"add(undefined, 'a')", "String a"},
      {L"add('1', '2')", "String 12"},
      {L"add('1', 2)", "Double 3"},
      {L"add('a', 2)", "error 13"},
      {L"add(null, 2)", "Null"},
      {L"add(1.7e308, 1.7e308)", "error 6"},
  });
}

TEST_F(VbOperators, SubtractMultiplyAndDivide) {
  expect({
      {L"sub(1, 2)", "Integer -1"},
      {L"sub(dateserial(2024, 3, 1), dateserial(2024, 2, 1))", "Double 29"},
      {L"sub(dateserial(2024, 3, 1), 1)", "Date 2024-02-29"},
      {L"sub('5', 2)", "Double 3"},
      {L"mul(300, 200)", "Long 60000"},
      {L"mul(100000, 100000)", "Double 10000000000"},
      {L"mul(0.5, 2)", "Double 1"},
      {L"mul(ccur(1.1), 3)", "Currency 3.3"},
      {L"mul(ccur(1.1), 3.5)", "Double 3.85"},
      {L"mul(ccur('0.0001'), ccur('0.5'))", "Currency 0"},
      {L"mul(ccur('0.0003'), ccur('0.5'))", "Currency 0.0002"},
      {L"mul(null, 3)", "Null"},
      {L"div(4, 2)", "Double 2"},
      {L"div(1, 3)", "Double 0.333333333333333"},
      {L"div(csng(1), csng(2))", "Single 0.5"},
      {L"div(1, 0)", "error 11"},
      {L"div(0, 0)", "error 6"},
      {L"div(null, 0)", "Null"},
      {L"neg(5)", "Integer -5"},
      {L"neg(0)", "Integer 0"},
      {L"neg('5')", "Double -5"},
      {L"neg(ccur(1.5))", "Currency -1.5"},
      {L"neg(null)", "Null"},
  });
}

TEST_F(VbOperators, RoundOperandsOfWholeDivisionToEven) {
  expect({
      {L"idiv(7, 2)", "Integer 3"},
      {L"idiv(-7, 2)", "Integer -3"},
      {L"idiv(7.5, 2)", "Long 4"},
      {L"idiv(6.5, 2)", "Long 3"},
      {L"idiv(7, 0)", "error 11"},
      {L"idiv(3000000000, 2)", "error 6"},
      {L"idiv(-2147483648, -1)", "error 6"},
      {L"idiv(cbyte(7), cbyte(2))", "Byte 3"},
      {L"mod(7, 3)", "Integer 1"},
      {L"mod(-7, 3)", "Integer -1"},
      {L"mod(-6, 3)", "Integer 0"},
      {L"mod(19, 6.7)", "Long 5"},
      {L"mod(19.6, 6)", "Long 2"},
      {L"mod(7, 0)", "error 11"},
      {L"mod('7', 4)", "Long 3"},
      {L"mod(null, 4)", "Null"},
  });
}

TEST_F(VbOperators, RaiseToAPower) {
  expect({
      {L"pow(2, 10)", "Double 1024"},
      {L"pow(2, 0.5)", "Double 1.4142135623731"},
      {L"pow(-8, 3)", "Double -512"},
      {L"pow(-8, 0.5)", "error 5"},
      {L"pow(0, -1)", "error 5"},
      {L"pow(10, 400)", "error 6"},
      {L"pow(null, 2)", "Null"},
  });
}

TEST_F(VbOperators, JoinText) {
  expect({
      {L"cat('a', 'b')", "String ab"},
      {L"cat('a', 1)", "String a1"},
      {L"cat(1, 2)", "String 12"},
      {L"cat(1.5, true)", "String 1.5True"},
      {L"cat('a', null)", "String a"},
      {L"cat(null, null)", "Null"},
      {L"cat(undefined, 'x')", "String x"},
      {L"cat('a', array(1))", "error 13"},
      {L"cat('a', nothing)", "error 91"},
  });
}

TEST_F(VbOperators, CompareANumberAsLessThanAnyText) {
  expect({
      {L"eq(1, 1)", "Boolean True"},
      {L"eq(1, clng(1))", "Boolean True"},
      {L"eq(1, 1.5)", "Boolean False"},
      {L"eq('a', 'A')", "Boolean False"},
      {L"lt('B', 'a')", "Boolean True"},
      {L"eq(1, '1')", "Boolean False"},
      {L"lt(5, '1')", "Boolean True"},
      {L"gt('1', 5)", "Boolean True"},
      {L"eq(1, '1', 1)", "Boolean True"},
      {L"eq(1, '1', 2)", "Boolean True"},
      {L"eq(1, '1.0', 1)", "Boolean True"},
      {L"eq(1, '1.0', 2)", "Boolean False"},
      {L"eq(1, 'one', 1)", "error 13"},
      {L"eq(undefined, 0)", "Boolean True"},
      {L"eq(undefined, '')", "Boolean True"},
      {L"eq(undefined, undefined)", "Boolean True"},
      {L"eq(true, -1)", "Boolean True"},
      {L"lt(true, false)", "Boolean True"},
      {L"eq(null, null)", "Null"},
      {L"ne(null, 1)", "Null"},
      {L"ne(1, 2)", "Boolean True"},
      {L"le(2, 2)", "Boolean True"},
      {L"ge(1, 2)", "Boolean False"},
      {L"eq(ccur('1.1'), ccur('1.1'))", "Boolean True"},
      {L"lt(dateserial(2024, 1, 1), dateserial(2024, 1, 2))", "Boolean True"},
      {L"eq(dateserial(2024, 1, 1), '1/1/2024', 1)", "Boolean True"},
      {L"eq(array(1), 1)", "error 13"},
      {L"eq(nothing, 1)", "error 91"},
  });
}

// The tables of the reference for And, Or, Xor, Eqv, Imp and Not.
TEST_F(VbOperators, KeepNullWhereTheOtherOperandDoesNotDecide) {
  expect({
      {L"and(true, null)", "Null"},
      {L"and(false, null)", "Boolean False"},
      {L"and(null, null)", "Null"},
      {L"and(0, null)", "Integer 0"},
      {L"and(5, null)", "Null"},
      {L"or(true, null)", "Boolean True"},
      {L"or(false, null)", "Null"},
      {L"or(null, -1)", "Integer -1"},
      {L"xor(true, null)", "Null"},
      {L"eqv(true, null)", "Null"},
      {L"imp(true, null)", "Null"},
      {L"imp(false, null)", "Boolean True"},
      {L"imp(null, true)", "Boolean True"},
      {L"imp(null, false)", "Null"},
      {L"imp(null, null)", "Null"},
      {L"not(null)", "Null"},
  });
}

TEST_F(VbOperators, WorkOnTheBitsOfNumbers) {
  expect({
      {L"and(10, 8)", "Integer 8"},
      {L"or(5, 2)", "Integer 7"},
      {L"xor(10, 8)", "Integer 2"},
      {L"eqv(10, 8)", "Integer -3"},
      {L"imp(10, 8)", "Integer -3"},
      {L"not(5)", "Integer -6"},
      {L"and(true, false)", "Boolean False"},
      {L"xor(true, false)", "Boolean True"},
      {L"eqv(true, true)", "Boolean True"},
      {L"imp(true, false)", "Boolean False"},
      {L"not(true)", "Boolean False"},
      {L"and(true, 6)", "Integer 6"},
      {L"and(2.5, 3)", "Long 2"},
      {L"and('6', 3)", "Long 2"},
      {L"and(clng(6), 3)", "Long 2"},
      {L"and(cbyte(6), cbyte(3))", "Byte 2"},
      {L"or(3000000000, 1)", "error 6"},
      {L"and('x', 1)", "error 13"},
  });
}

TEST_F(VbOperators, TellWhetherTwoObjectsAreOne) {
  expect({
      {L"is(nothing, nothing)", "Boolean True"},
      {L"is(o, o)", "Boolean True"},
      {L"is(o, p)", "Boolean False"},
      {L"is(o, nothing)", "Boolean False"},
      {L"is(1, nothing)", "error 424"},
  });
}

TEST_F(VbOperators, TakeNullForFalseInAConditionOnly) {
  expect({
      {L"cond(null)", "Boolean False"},
      {L"cond(true)", "Boolean True"},
      {L"cond(2)", "Boolean True"},
      {L"cond(0)", "Boolean False"},
      {L"cond('True')", "Boolean True"},
      {L"cond('0')", "Boolean False"},
      {L"cond('x')", "error 13"},
      {L"cond(undefined)", "Boolean False"},
      {L"cond(nothing)", "error 91"},
      {L"cbool(null)", "error 94"},
  });
}

}  // namespace
}  // namespace test
