#include <korlib/variant.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "korlib/variant/default_object.h"
#include "korlib/variant/values.h"

namespace {

using namespace values;

HRESULT opposite(HRESULT order) {
  if (order == VARCMP_LT) return VARCMP_GT;
  return order == VARCMP_GT ? VARCMP_LT : order;
}

void expect_order(const CComVariant& left, const CComVariant& right, HRESULT order, ULONG flags = 0) {
  EXPECT_EQ(order, VarCmp(&left, &right, 0, flags))
      << testing::PrintToString(left) << " with " << testing::PrintToString(right);
  EXPECT_EQ(opposite(order), VarCmp(&right, &left, 0, flags))
      << testing::PrintToString(right) << " with " << testing::PrintToString(left);
}

TEST(VarCmp, AnswersNullForNull) {
  for (const CComVariant& other : {null(), empty(), i4(1), text(L"a"), boolean(false), date(1)}) {
    expect_order(null(), other, VARCMP_NULL);
  }
}

TEST(VarCmp, ReadsEmptyAsZeroOrNoText) {
  expect_order(empty(), empty(), VARCMP_EQ);
  expect_order(empty(), i4(0), VARCMP_EQ);
  expect_order(empty(), r8(0.5), VARCMP_LT);
  expect_order(empty(), i4(-1), VARCMP_GT);
  expect_order(empty(), boolean(false), VARCMP_EQ);
  expect_order(empty(), text(L""), VARCMP_EQ);
  expect_order(empty(), of_type(VT_BSTR), VARCMP_EQ);
  expect_order(empty(), text(L"a"), VARCMP_LT);
  expect_order(empty(), date(0), VARCMP_EQ);
}

TEST(VarCmp, ComparesNumbersOfAllTypes) {
  const CComVariant ones[] = {i1(1),  i2(1),  i4(1),     i8(1),  integer(1),
                              ui1(1), ui2(1), ui4(1),    ui8(1), unsigned_integer(1),
                              r4(1),  r8(1),  cy(10000), date(1)};
  for (const CComVariant& one : ones) {
    for (const CComVariant& other : ones) expect_order(one, other, VARCMP_EQ);
    expect_order(one, i4(2), VARCMP_LT);
    expect_order(one, r8(0.99), VARCMP_GT);
    expect_order(one, boolean(true), VARCMP_GT);  // true is -1
  }
}

TEST(VarCmp, ComparesWithoutLosingDigits) {
  constexpr LONGLONG kBeyondDoubles = 9007199254740993;  // 2^53 + 1
  expect_order(i8(kBeyondDoubles), i8(kBeyondDoubles - 1), VARCMP_GT);
  expect_order(i8(kBeyondDoubles), r8(9007199254740992.0), VARCMP_GT);
  expect_order(ui8(18446744073709551615u), i8(-1), VARCMP_GT);
  expect_order(ui8(18446744073709551615u), r8(18446744073709551616.0), VARCMP_LT);
  expect_order(cy(std::numeric_limits<LONGLONG>::max()), cy(std::numeric_limits<LONGLONG>::max() - 1), VARCMP_GT);
}

TEST(VarCmp, HasNoOrderForWhatIsNoNumber) {
  expect_order(r8(std::nan("")), r8(1), DISP_E_TYPEMISMATCH);
  expect_order(r8(std::nan("")), r8(std::nan("")), DISP_E_TYPEMISMATCH);
}

TEST(VarCmp, ComparesBooleansAndDates) {
  expect_order(boolean(true), boolean(true), VARCMP_EQ);
  expect_order(boolean(true), boolean(false), VARCMP_LT);
  expect_order(date(45000.5), date(45000.25), VARCMP_GT);
  expect_order(date(45000), i4(45000), VARCMP_EQ);
}

TEST(VarCmp, ComparesTextByCharactersWithCase) {
  expect_order(text(L"abc"), text(L"abc"), VARCMP_EQ);
  expect_order(text(L"abc"), text(L"abd"), VARCMP_LT);
  expect_order(text(L"abc"), text(L"ABC"), VARCMP_GT);
  expect_order(text(L"ab"), text(L"abc"), VARCMP_LT);
  expect_order(text(L""), of_type(VT_BSTR), VARCMP_EQ);
  expect_order(text(std::wstring_view(L"a\0b", 3)), text(std::wstring_view(L"a\0c", 3)), VARCMP_LT);
  expect_order(text(L"\xFFFD"), text(L"\x1F600"), VARCMP_LT);
  expect_order(text(L"10"), text(L"9"), VARCMP_LT);
}

TEST(VarCmp, IgnoresCaseWhenAsked) {
  expect_order(text(L"abc"), text(L"ABC"), VARCMP_EQ, NORM_IGNORECASE);
  expect_order(text(L"\xC9T\xC9"), text(L"\xE9t\xE9"), VARCMP_EQ, NORM_IGNORECASE);
  expect_order(text(L"\x416"), text(L"\x436"), VARCMP_EQ, NORM_IGNORECASE);
  expect_order(text(L"abc"), text(L"ABD"), VARCMP_LT, NORM_IGNORECASE);
  expect_order(text(L"ABC"), text(L"ab"), VARCMP_GT, NORM_IGNORECASE);
}

TEST(VarCmp, PutsNumbersBeforeText) {
  for (const CComVariant& number : {i4(9), r8(1e300), boolean(true), date(1), cy(1)}) {
    expect_order(number, text(L""), VARCMP_LT);
    expect_order(number, text(L"1"), VARCMP_LT);
  }
}

TEST(VarCmp, FollowsReferences) {
  CComVariant value(LONG{4});
  expect_order(reference_to(value), i4(4), VARCMP_EQ);
  expect_order(reference_to_variant(value), i4(5), VARCMP_LT);
}

TEST(VarCmp, ComparesObjectsByTheirValues) {
  {
    const auto object = DefaultObject::holding(text(L"abc"));
    expect_order(CComVariant(object.get()), text(L"abc"), VARCMP_EQ);
    expect_order(CComVariant(object.get()), text(L"abd"), VARCMP_LT);
    expect_order(CComVariant(DefaultObject::holding(null()).get()), text(L"a"), VARCMP_NULL);
  }
  EXPECT_EQ(0, DefaultObject::alive());
}

// Codes of failures, as numbers with a sign: 0x80004005 lies before 0x80020004, and both before success.
TEST(VarCmp, ComparesErrorsByTheirCodes) {
  expect_order(error(DISP_E_PARAMNOTFOUND), error(DISP_E_PARAMNOTFOUND), VARCMP_EQ);
  expect_order(error(E_FAIL), error(DISP_E_PARAMNOTFOUND), VARCMP_LT);
  expect_order(error(E_FAIL), error(S_OK), VARCMP_LT);
  for (const CComVariant& other : {empty(), i4(E_FAIL), r8(0), boolean(false), text(L"x"), date(1)}) {
    expect_order(error(E_FAIL), other, DISP_E_TYPEMISMATCH);
  }
  expect_order(error(E_FAIL), null(), VARCMP_NULL);
}

TEST(VarCmp, RefusesWhatHasNoOrder) {
  CComSafeArray array(VT_UI1, 1);
  CComVariant bytes;
  array.detach_to(&bytes);
  for (const CComVariant& other : {bytes, error(DISP_E_PARAMNOTFOUND), of_type(VT_DISPATCH), of_type(VT_UNKNOWN)}) {
    expect_order(other, i4(1), DISP_E_TYPEMISMATCH);
  }
  EXPECT_EQ(DISP_E_TYPEMISMATCH, VarCmp(&bytes, &bytes, 0, 0));
  VARIANT no_type{};
  no_type.vt = 15;
  const CComVariant one = i4(1);
  EXPECT_EQ(DISP_E_BADVARTYPE, VarCmp(&no_type, &one, 0, 0));
}

}  // namespace
