// Conversions at the limits of the types: ranges, rounding, precision.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "korlib/variant/change_type_rows.h"

namespace {

using namespace values;

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

TEST(ChangeTypeLimits, ReachesTheLimitsOfEveryIntegerTypeAndNotBeyond) {
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

TEST(ChangeTypeLimits, RoundsHalvesToTheEvenNeighbour) {
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

TEST(ChangeTypeLimits, RefusesNumbersThatAreNone) {
  const double no_number = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double real : {no_number, infinity, -infinity}) {
    for (const VARTYPE vt : {VT_I1, VT_I4, VT_I8, VT_UI8, VT_CY, VT_DATE}) expect_change(r8(real), vt, kOver);
  }
  expect_change(r8(infinity), VT_R4, r4(std::numeric_limits<float>::infinity()));
}

TEST(ChangeTypeLimits, RefusesDoublesThatNoFloatHolds) {
  expect_change(r8(1e39), VT_R4, kOver);
  expect_change(r8(-1e39), VT_R4, kOver);
  expect_change(r8(3.4028234663852886e38), VT_R4, r4(std::numeric_limits<float>::max()));
  expect_change(r8(1e-60), VT_R4, r4(0));
  expect_change(r4(0.1f), VT_R8, r8(0.10000000149011612));
}

TEST(ChangeTypeLimits, KeepsCurrencyExactToTheTenThousandth) {
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

}  // namespace
