// Every conversion between plain types: one row a value, one column a type.
#include <korlib/variant.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "korlib/variant/default_object.h"
#include "korlib/variant/values.h"

namespace {

using namespace values;

constexpr HRESULT kOver = DISP_E_OVERFLOW;
constexpr HRESULT kMismatch = DISP_E_TYPEMISMATCH;

// What a cell expects: a value, or a code.
struct Cell {
  Cell(HRESULT code) : hr(code) {}
  Cell(CComVariant expected) : value(std::move(expected)) {}
  HRESULT hr = S_OK;
  CComVariant value;
};

void expect_change(CComVariant source, VARTYPE vt, const Cell& expected) {
  SCOPED_TRACE(testing::PrintToString(source) + " to " + std::to_string(vt));
  CComVariant target(L"kept");
  EXPECT_EQ(expected.hr, VariantChangeType(&target, &source, 0, vt));
  if (FAILED(expected.hr)) {
    ASSERT_EQ(VT_BSTR, target.vt);
    EXPECT_EQ(L"kept", korlib::view_of(target.bstrVal));
    // In place, a failure keeps the value as well.
    CComVariant in_place(source);
    EXPECT_EQ(expected.hr, VariantChangeType(&in_place, &in_place, 0, vt));
    EXPECT_PRED2(same, in_place, source);
    return;
  }
  EXPECT_PRED2(same, target, expected.value);
  CComVariant in_place(source);
  EXPECT_EQ(S_OK, VariantChangeType(&in_place, &in_place, 0, vt));
  EXPECT_PRED2(same, in_place, expected.value);

  if (source.vt == VT_EMPTY || source.vt == VT_NULL) return;
  CComVariant by_value;
  const CComVariant reference = reference_to(source);
  EXPECT_EQ(S_OK, VariantChangeType(&by_value, &reference, 0, vt));
  EXPECT_PRED2(same, by_value, expected.value);
  CComVariant by_variant;
  const CComVariant outer = reference_to_variant(source);
  EXPECT_EQ(S_OK, VariantChangeType(&by_variant, &outer, 0, vt));
  EXPECT_PRED2(same, by_variant, expected.value);
}

struct Row {
  CComVariant source;
  Cell boolean_, i1_, i2_, i4_, i8_, int_, ui1_, ui2_, ui4_, ui8_, uint_, r4_, r8_, cy_, date_, text_;
};

void expect_row(const Row& row) {
  const struct {
    VARTYPE vt;
    const Cell& cell;
  } columns[] = {{VT_BOOL, row.boolean_}, {VT_I1, row.i1_},   {VT_I2, row.i2_},     {VT_I4, row.i4_},
                 {VT_I8, row.i8_},        {VT_INT, row.int_}, {VT_UI1, row.ui1_},   {VT_UI2, row.ui2_},
                 {VT_UI4, row.ui4_},      {VT_UI8, row.ui8_}, {VT_UINT, row.uint_}, {VT_R4, row.r4_},
                 {VT_R8, row.r8_},        {VT_CY, row.cy_},   {VT_DATE, row.date_}, {VT_BSTR, row.text_}};
  for (const auto& column : columns) expect_change(row.source, column.vt, column.cell);
}

// The row of a whole number that fits everywhere.
Row small(CComVariant source, signed char n, const wchar_t* as_text) {
  const auto u = static_cast<BYTE>(n);
  return {std::move(source),
          boolean(n != 0),
          i1(n),
          i2(n),
          i4(n),
          i8(n),
          integer(n),
          ui1(u),
          ui2(u),
          ui4(u),
          ui8(u),
          unsigned_integer(u),
          r4(static_cast<float>(n)),
          r8(n),
          cy(LONGLONG{n} * 10000),
          date(n),
          text(as_text)};
}

// The row of a negative whole number: no unsigned type holds it, but one of the same size its bits.
Row negative(CComVariant source, signed char n, const wchar_t* as_text) {
  const VARTYPE vt = source.vt;
  const bool has_four_bytes = vt == VT_I4 || vt == VT_INT;
  Row row = small(std::move(source), n, as_text);
  row.ui1_ = vt == VT_I1 ? Cell(ui1(static_cast<BYTE>(n))) : Cell(kOver);
  row.ui2_ = vt == VT_I2 ? Cell(ui2(static_cast<USHORT>(n))) : Cell(kOver);
  row.ui4_ = has_four_bytes ? Cell(ui4(static_cast<ULONG>(n))) : Cell(kOver);
  row.uint_ = has_four_bytes ? Cell(unsigned_integer(static_cast<UINT>(n))) : Cell(kOver);
  row.ui8_ = vt == VT_I8 ? Cell(ui8(static_cast<ULONGLONG>(n))) : Cell(kOver);
  return row;
}

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
  row.date_ = Cell(kMismatch);  // a number is no date
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
        L"$", L"$$5", L"$ 5", L"5$",
        L"\x20AC"
        L"5",
        L"-$-5", L"-5-", L"+5-", L"5--", L"5 -", L"5-5-", L"(5", L"5)", L"()", L"((5))", L"(-5)", L"-(5)", L"(5)-",
        L"( 5 )", L"(5) 5", L"+", L"-", L"$&H5", L"(&H5)", L"&H5-", L"&H1,234"}) {
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
  // Of any other size, and from numbers that are no integers, a value has to fit.
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

template <class Integer>
void expect_limits(VARTYPE vt, CComVariant (*make)(Integer)) {
  using Limits = std::numeric_limits<Integer>;
  const std::wstring least = std::to_wstring(Limits::min());
  const std::wstring most = std::to_wstring(Limits::max());
  expect_change(text(least), vt, make(Limits::min()));
  expect_change(text(most), vt, make(Limits::max()));
  expect_change(make(Limits::min()), VT_BSTR, text(least));
  expect_change(make(Limits::max()), VT_BSTR, text(most));
  expect_change(text(most + L"0"), vt, kOver);
  expect_change(text(L"-" + most + L"0"), vt, kOver);
  // As doubles, where the type's own end is exact, and the next whole number beyond it.
  if constexpr (sizeof(Integer) < 8) {
    const auto first = static_cast<double>(Limits::min());
    const auto last = static_cast<double>(Limits::max());
    expect_change(r8(first), vt, make(Limits::min()));
    expect_change(r8(last), vt, make(Limits::max()));
    expect_change(r8(first - 1), vt, kOver);
    expect_change(r8(last + 1), vt, kOver);
    expect_change(r8(last + 0.25), vt, make(Limits::max()));
    expect_change(r8(first - 0.25), vt, make(Limits::min()));
  }
}

TEST(ChangeType, ReachesTheLimitsOfEveryIntegerTypeAndNotBeyond) {
  expect_limits<signed char>(VT_I1, i1);
  expect_limits<SHORT>(VT_I2, i2);
  expect_limits<LONG>(VT_I4, i4);
  expect_limits<LONGLONG>(VT_I8, i8);
  expect_limits<INT>(VT_INT, integer);
  expect_limits<BYTE>(VT_UI1, ui1);
  expect_limits<USHORT>(VT_UI2, ui2);
  expect_limits<ULONG>(VT_UI4, ui4);
  expect_limits<ULONGLONG>(VT_UI8, ui8);
  expect_limits<UINT>(VT_UINT, unsigned_integer);
  expect_change(r8(9223372036854775808.0), VT_I8, kOver);
  expect_change(r8(-9223372036854775808.0), VT_I8, i8(std::numeric_limits<LONGLONG>::min()));
  expect_change(r8(18446744073709551616.0), VT_UI8, kOver);
  expect_change(ui8(9223372036854775808u), VT_UI8, ui8(9223372036854775808u));
  expect_change(text(L"18446744073709551616"), VT_UI8, kOver);
  expect_change(text(L"-9223372036854775809"), VT_I8, kOver);
}

TEST(ChangeType, RoundsHalvesToTheEvenNeighbour) {
  const struct {
    double real;
    LONG rounded;
  } cases[] = {{0.5, 0},   {1.5, 2},  {2.5, 2},  {3.5, 4},    {-0.5, 0},      {-1.5, -2},
               {-2.5, -2}, {0.49, 0}, {0.51, 1}, {-0.51, -1}, {2.4999999, 2}, {2.5000001, 3}};
  for (const auto& c : cases) {
    expect_change(r8(c.real), VT_I4, i4(c.rounded));
    expect_change(r4(static_cast<float>(c.real)), VT_I2,
                  i2(static_cast<SHORT>(std::nearbyint(static_cast<float>(c.real)))));
    expect_change(date(c.real), VT_I8, i8(c.rounded));
  }
  const struct {
    LONGLONG ten_thousandths;
    LONG rounded;
  } amounts[] = {{5000, 0},  {15000, 2},   {25000, 2},   {24999, 2},  {25001, 3},
                 {-5000, 0}, {-15000, -2}, {-25000, -2}, {-25001, -3}};
  for (const auto& c : amounts) expect_change(cy(c.ten_thousandths), VT_I4, i4(c.rounded));
  expect_change(text(L"2.5"), VT_I4, i4(2));
  expect_change(text(L"3.5"), VT_UI1, ui1(4));
}

TEST(ChangeType, RefusesNumbersThatAreNone) {
  const double no_number = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double real : {no_number, infinity, -infinity}) {
    for (const VARTYPE vt : {VT_I1, VT_I4, VT_I8, VT_UI8, VT_CY, VT_DATE}) expect_change(r8(real), vt, kOver);
  }
  expect_change(r8(infinity), VT_R4, r4(std::numeric_limits<float>::infinity()));
}

TEST(ChangeType, RefusesDoublesThatNoFloatHolds) {
  expect_change(r8(1e39), VT_R4, kOver);
  expect_change(r8(-1e39), VT_R4, kOver);
  expect_change(r8(3.4028234663852886e38), VT_R4, r4(std::numeric_limits<float>::max()));
  expect_change(r8(1e-60), VT_R4, r4(0));
  expect_change(r4(0.1f), VT_R8, r8(0.10000000149011612));
}

TEST(ChangeType, KeepsCurrencyExactToTheTenThousandth) {
  constexpr LONGLONG kMost = std::numeric_limits<LONGLONG>::max();
  expect_change(text(L"922337203685477.5807"), VT_CY, cy(kMost));
  expect_change(text(L"-922337203685477.5808"), VT_CY, cy(std::numeric_limits<LONGLONG>::min()));
  expect_change(text(L"922337203685477.5808"), VT_CY, kOver);
  expect_change(text(L"12.34565"), VT_CY, cy(123456));  // half to even
  expect_change(text(L"12.34575"), VT_CY, cy(123458));
  expect_change(text(L"1.5e2"), VT_CY, cy(1500000));
  expect_change(text(L"1e30"), VT_CY, kOver);
  expect_change(cy(kMost), VT_BSTR, text(L"922337203685477.5807"));
  expect_change(cy(std::numeric_limits<LONGLONG>::min()), VT_BSTR, text(L"-922337203685477.5808"));
  expect_change(r8(0.1), VT_CY, cy(1000));
  expect_change(r8(1e15), VT_CY, kOver);
  expect_change(i8(922337203685478), VT_CY, kOver);
  expect_change(cy(12345), VT_R8, r8(1.2345));
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
