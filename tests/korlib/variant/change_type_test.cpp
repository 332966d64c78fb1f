// Every conversion between plain types.
#include <korlib/variant.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "korlib/variant/change_type_rows.h"
#include "korlib/variant/default_object.h"

namespace {

using namespace values;

TEST(ChangeType, ConvertsSmallNumbersOfEveryType) {
  const Row rows[] = {
      small(i1(5), 5, L"5"),           small(i2(5), 5, L"5"),
      small(i4(5), 5, L"5"),           small(i8(5), 5, L"5"),
      small(integer(5), 5, L"5"),      small(ui1(5), 5, L"5"),
      small(ui2(5), 5, L"5"),          small(ui4(5), 5, L"5"),
      small(ui8(5), 5, L"5"),          small(unsigned_integer(5), 5, L"5"),
      small(r4(5), 5, L"5"),           small(r8(5), 5, L"5"),
      small(cy(50000), 5, L"5"),       negative(i1(-5), -5, L"-5"),
      negative(i2(-5), -5, L"-5"),     negative(i4(-5), -5, L"-5"),
      negative(i8(-5), -5, L"-5"),     negative(integer(-5), -5, L"-5"),
      negative(r4(-5), -5, L"-5"),     negative(r8(-5), -5, L"-5"),
      negative(cy(-50000), -5, L"-5"), small(i4(0), 0, L"0"),
      small(r8(0), 0, L"0"),           small(r8(-0.0), 0, L"0"),
      small(cy(0), 0, L"0"),
  };
  for (const Row& row : rows) expect_row(row);
}

TEST(ChangeType, ReadsEmptyAsZeroFalseAndNoText) { expect_row(small(empty(), 0, L"")); }

TEST(ChangeType, WritesBooleansAsWordsAndAsAllBits) {
  Row row = small(boolean(true), -1, L"True");
  row.ui1_ = ui1(0xFF);
  row.ui2_ = ui2(0xFFFF);
  row.ui4_ = ui4(0xFFFFFFFF);
  row.ui8_ = ui8(0xFFFFFFFFFFFFFFFF);
  row.uint_ = unsigned_integer(0xFFFFFFFF);
  expect_row(row);
  expect_row(small(boolean(false), 0, L"False"));
}

TEST(ChangeType, TakesAnyBitOfABooleanAsTrue) {
  CComVariant odd = of_type(VT_BOOL);
  odd.boolVal = 1;
  expect_change(odd, VT_BSTR, text(L"True"));
  expect_change(odd, VT_I4, i4(-1));
}

TEST(ChangeType, ReadsNumbersInText) {
  Row row = small(text(L" 5 "), 5, L" 5 ");
  row.date_ = Cell(kMismatch);  // a number is not a date
  expect_row(row);
  Row minus = negative(text(L"-5"), -5, L"-5");
  minus.date_ = Cell(kMismatch);
  expect_row(minus);
}

TEST(ChangeType, RefusesTextThatIsNoNumber) {
  for (const wchar_t* no_number :
       {L"", L" ", L"abc", L"5x", L"x5", L"--5", L"- 5", L"5 5", L".", L"e5", L"1e", L"1e+", L"1ex", L"&H", L"&HG",
        L"&O8", L"&", L"0x10", L"1.2.3", L"NaN", L"Infinity", L"-Infinity",
        // groups
        L"1,5", L"1,", L",123", L",123.5", L"1,2345", L"1234,567", L"1,23,456", L"1,234,", L"1,,234", L"1.234,5",
        L"1.5,000",
        // signs, parentheses and currency signs
        L"$", L"$$5", L"$ 5", L"5$", L"\u20AC5", L"-$-5", L"-5-", L"+5-", L"5--", L"5 -", L"5-5-", L"(5", L"5)", L"()",
        L"((5))", L"(-5)", L"-(5)", L"(5)-", L"( 5 )", L"(5) 5", L"+", L"-", L"$&H5", L"(&H5)", L"&H5-", L"&H1,234"}) {
    for (const VARTYPE vt : {VT_BOOL, VT_I1, VT_I2, VT_I4, VT_I8, VT_INT, VT_UI1, VT_UI2, VT_UI4, VT_UI8, VT_UINT,
                             VT_R4, VT_R8, VT_CY, VT_DATE}) {
      expect_change(text(no_number), vt, kMismatch);
    }
  }
}

// The text, and what it is in ten-thousandths.
TEST(ChangeType, ReadsGroupsCurrencySignsAndParentheses) {
  const struct {
    const wchar_t* text;
    LONGLONG ten_thousandths;
  } cases[] = {{L"1,234.5", 12345000},
               {L"1,234", 12340000},
               {L"12,345", 123450000},
               {L"123,456,789.25", 1234567892500},
               {L"-1,000", -10000000},
               {L"0,001", 10000},
               {L"1,234e2", 1234000000},
               {L"$5", 50000},
               {L"\x00A4"
                L"5",
                50000},
               {L" $1,234.50 ", 12345000},
               {L"-$5", -50000},
               {L"$-5", -50000},
               {L"+$5", 50000},
               {L"$.5", 5000},
               {L"(12)", -120000},
               {L"(1,234.5)", -12345000},
               {L"($5)", -50000},
               {L"$(5)", -50000},
               {L"(0)", 0},
               {L"12-", -120000},
               {L"12+", 120000},
               {L"$1.5-", -15000},
               {L"1e1-", -100000},
               {L"-&HA", -100000},
               {L"+&O12", 100000}};
  for (const auto& c : cases) {
    expect_change(text(c.text), VT_CY, cy(c.ten_thousandths));
    expect_change(text(c.text), VT_R8, r8(static_cast<double>(c.ten_thousandths) / 10000));
    expect_change(text(c.text), VT_BOOL, boolean(c.ten_thousandths != 0));
    if (c.ten_thousandths % 10000 != 0) continue;
    expect_change(text(c.text), VT_I8, i8(c.ten_thousandths / 10000));
    expect_change(text(c.text), VT_DATE, kMismatch);
  }
}

TEST(ChangeType, RefusesNullForEveryOtherType) {
  for (VARTYPE vt = VT_EMPTY; vt <= VT_UINT; ++vt) {
    if (vt == VT_VARIANT || vt == 14 || vt == 15) continue;
    expect_change(null(), vt, vt == VT_NULL ? Cell(null()) : Cell(kMismatch));
  }
}

TEST(ChangeType, RefusesAnOmittedArgumentForEveryOtherType) {
  const CComVariant omitted = error(DISP_E_PARAMNOTFOUND);
  for (VARTYPE vt = VT_EMPTY; vt <= VT_UINT; ++vt) {
    if (vt == VT_VARIANT || vt == 14 || vt == 15) continue;
    expect_change(omitted, vt, vt == VT_ERROR ? Cell(omitted) : Cell(kMismatch));
  }
}

TEST(ChangeType, GivesErrorsAndObjectsToThemselvesOnly) {
  const CComVariant sources[] = {empty(), i4(1), r8(1), text(L"x"), boolean(true), date(1), cy(1)};
  for (const CComVariant& source : sources) {
    for (const VARTYPE vt : {VT_ERROR, VT_DISPATCH, VT_UNKNOWN}) expect_change(source, vt, kMismatch);
  }
}

TEST(ChangeType, DropsAnyValueForEmptyAndForNull) {
  const CComVariant sources[] = {i1(-1),
                                 i2(1),
                                 i4(1),
                                 i8(1),
                                 integer(1),
                                 ui1(1),
                                 ui2(1),
                                 ui4(1),
                                 ui8(1),
                                 r4(1),
                                 r8(1),
                                 cy(1),
                                 date(1),
                                 boolean(true),
                                 empty(),
                                 text(L"x"),
                                 text(L""),
                                 of_type(VT_BSTR),
                                 unsigned_integer(1),
                                 of_type(VT_DISPATCH),
                                 of_type(VT_UNKNOWN)};
  for (const CComVariant& source : sources) {
    expect_change(source, VT_EMPTY, empty());
    expect_change(source, VT_NULL, null());
  }
}

TEST(ChangeType, DropsAnObjectWithoutAskingItsValue) {
  {
    const auto object = DefaultObject::holding(i4(1));
    for (const VARTYPE vt : {VT_EMPTY, VT_NULL}) {
      CComVariant value(object.get());
      EXPECT_EQ(S_OK, VariantChangeType(&value, &value, 0, vt));
      EXPECT_EQ(vt, value.vt);
    }
    EXPECT_EQ(1u, object->references());
    EXPECT_EQ(0, object->last_flags());
  }
  EXPECT_EQ(0, DefaultObject::alive());
}

TEST(ChangeType, KeepsTheBitsBetweenIntegersOfOneSize) {
  // Each pair both ways; the codes and masks are what components declare one way or the other.
  const struct {
    CComVariant with_sign;
    CComVariant without;
  } pairs[] = {{i1(-1), ui1(0xFF)},
               {i1(-128), ui1(0x80)},
               {i2(-32768), ui2(0x8000)},
               {i4(-2147467259), ui4(0x80004005)},  // the code of an unspecified failure
               {i4(-2147467259), unsigned_integer(0x80004005)},
               {integer(-1), ui4(0xFFFFFFFF)},
               {integer(-1), unsigned_integer(0xFFFFFFFF)},
               {i8(-1), ui8(0xFFFFFFFFFFFFFFFF)},
               {i8(std::numeric_limits<LONGLONG>::min()), ui8(0x8000000000000000)}};
  for (const auto& pair : pairs) {
    expect_change(pair.with_sign, pair.without.vt, pair.without);
    expect_change(pair.without, pair.with_sign.vt, pair.with_sign);
  }
  // Of any other size, and from numbers that are not integers, a value has to fit.
  expect_change(ui4(0x80004005), VT_I2, kOver);
  expect_change(ui4(0x80004005), VT_I8, i8(0x80004005));
  expect_change(i2(-1), VT_UI4, kOver);
  expect_change(i4(-1), VT_UI8, kOver);
  expect_change(r8(-1), VT_UI4, kOver);
  expect_change(r8(4294967295), VT_I4, kOver);
  expect_change(text(L"4294967295"), VT_I4, kOver);
  expect_change(cy(-10000), VT_UI4, kOver);
}

TEST(ChangeType, RefusesTargetsThatAreNoType) {
  for (const VARTYPE vt : {VARTYPE{VT_VARIANT}, VARTYPE{14}, VARTYPE{15}, VARTYPE{24}, VARTYPE{0x0FFF},
                           VARTYPE{VT_BYREF | VT_I4}, VARTYPE{VT_BYREF | VT_VARIANT}, VARTYPE{VT_ARRAY}}) {
    expect_change(i4(1), vt, DISP_E_BADVARTYPE);
  }
}

TEST(ChangeType, TakesDatesAsDaysSinceDayZero) {
  expect_change(r8(45000.25), VT_DATE, date(45000.25));
  expect_change(date(45000.25), VT_R8, r8(45000.25));
  expect_change(date(45000.75), VT_I4, i4(45001));
  expect_change(i4(2958465), VT_DATE, date(2958465));
  expect_change(i4(2958466), VT_DATE, kOver);  // the year 10000
  expect_change(r8(-657434.75), VT_DATE, date(-657434.75));
  expect_change(r8(-657435), VT_DATE, kOver);  // the year 99
}

TEST(ChangeType, ReadsTheWordsOfBooleans) {
  const struct {
    const wchar_t* word;
    bool truth;
  } cases[] = {{L"True", true},   {L"true", true},     {L" TRUE ", true},  {L"False", false}, {L"fALSE", false},
               {L"1", true},      {L"-1", true},       {L"0", false},      {L"0.0", false},   {L"0.1", true},
               {L"#TRUE#", true}, {L"#FALSE#", false}, {L" #TRUE# ", true}};
  for (const auto& c : cases) expect_change(text(c.word), VT_BOOL, boolean(c.truth));
  for (const wchar_t* no_word : {L"yes", L"truth", L"Tru", L"wahr", L"#true#", L"#TRUE", L"TRUE#", L"#1#", L"##"})
    expect_change(text(no_word), VT_BOOL, kMismatch);
  expect_change(text(L"True"), VT_I4, kMismatch);
  expect_change(text(L"#TRUE#"), VT_I4, kMismatch);
}

TEST(ChangeType, LeavesArraysAsTheyAre) {
  CComSafeArray bytes(VT_UI1, 2);
  bytes.data<BYTE>()[1] = 9;
  CComVariant source;
  bytes.detach_to(&source);
  CComVariant copy;
  EXPECT_EQ(S_OK, VariantChangeType(&copy, &source, 0, VT_ARRAY | VT_UI1));
  EXPECT_EQ(9, static_cast<BYTE*>(copy.parray->pvData)[1]);
  for (const VARTYPE vt : {VARTYPE{VT_BSTR}, VARTYPE{VT_I4}, VARTYPE{VT_DISPATCH}, VARTYPE{VT_ARRAY | VT_I4}}) {
    EXPECT_EQ(kMismatch, VariantChangeType(&copy, &source, 0, vt));
  }
  const CComVariant number = i4(1);
  EXPECT_EQ(kMismatch, VariantChangeType(&copy, &number, 0, VT_ARRAY | VT_I4));
}

TEST(ChangeType, KeepsTextItself) {
  const std::wstring_view with_nul(L"a\0b", 3);
  expect_change(text(with_nul), VT_BSTR, text(with_nul));
  CComVariant none = of_type(VT_BSTR);
  expect_change(none, VT_BOOL, kMismatch);
  expect_change(text(std::wstring_view(L"5\0", 2)), VT_I4, kMismatch);
}

}  // namespace
