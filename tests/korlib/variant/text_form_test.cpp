// What numbers and dates look like as text, and which text is read as one.
#include <korlib/variant.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "korlib/variant/values.h"

namespace {

using namespace values;

std::wstring text_of(const CComVariant& value) {
  CComVariant target;
  EXPECT_EQ(S_OK, VariantChangeType(&target, &value, 0, VT_BSTR));
  return target.vt == VT_BSTR ? std::wstring(korlib::view_of(target.bstrVal)) : L"(failed)";
}

HRESULT read(std::wstring_view source, VARTYPE vt, CComVariant* target) {
  const CComVariant value(source);
  return VariantChangeType(target, &value, 0, vt);
}

double real_of(std::wstring_view source) {
  CComVariant target;
  EXPECT_EQ(S_OK, read(source, VT_R8, &target));
  return target.dblVal;
}

TEST(NumberText, IsWhatAScriptPrintsWithACapitalE) {
  const struct {
    double number;
    const wchar_t* text;
  } cases[] = {{1, L"1"},
               {-1, L"-1"},
               {0.1, L"0.1"},
               {-0.1, L"-0.1"},
               {0.1 + 0.2, L"0.30000000000000004"},
               {1.5, L"1.5"},
               {100, L"100"},
               {123456789, L"123456789"},
               {123456.789, L"123456.789"},
               {9007199254740993.0, L"9007199254740992"},
               {1e15, L"1000000000000000"},
               {1e20, L"100000000000000000000"},
               {123456789012345680000.0, L"123456789012345680000"},
               {1e21, L"1E+21"},
               {1.5e21, L"1.5E+21"},
               {-1.25e100, L"-1.25E+100"},
               {0.001, L"0.001"},
               {0.000001, L"0.000001"},
               {0.00000123, L"0.00000123"},
               {0.0000001, L"1E-7"},
               {1.5e-10, L"1.5E-10"},
               {std::numeric_limits<double>::max(), L"1.7976931348623157E+308"},
               {std::numeric_limits<double>::denorm_min(), L"5E-324"},
               {std::numeric_limits<double>::infinity(), L"Infinity"},
               {-std::numeric_limits<double>::infinity(), L"-Infinity"},
               {std::numeric_limits<double>::quiet_NaN(), L"NaN"}};
  for (const auto& c : cases) EXPECT_EQ(c.text, text_of(r8(c.number)));
}

TEST(NumberText, IsTheShortestForAFloatAsWell) {
  EXPECT_EQ(L"0.1", text_of(r4(0.1f)));
  EXPECT_EQ(L"16777216", text_of(r4(16777216.0f)));
  EXPECT_EQ(L"3.4028235E+38", text_of(r4(3.4028235e38f)));
  EXPECT_EQ(L"1E-7", text_of(r4(1e-7f)));
}

TEST(NumberText, ReadsBackAsTheSameNumber) {
  std::mt19937_64 random(20261121);
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t bits = random();
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    if (!std::isfinite(number)) continue;
    EXPECT_EQ(number, real_of(text_of(r8(number))));
  }
}

TEST(NumberText, ShowsNoMoreDecimalsOfAnAmountThanItHas) {
  const struct {
    LONGLONG ten_thousandths;
    const wchar_t* text;
  } cases[] = {{0, L"0"},        {10000, L"1"},  {12345, L"1.2345"}, {12300, L"1.23"},
               {-5000, L"-0.5"}, {1, L"0.0001"}, {-1, L"-0.0001"},   {100000000, L"10000"}};
  for (const auto& c : cases) EXPECT_EQ(c.text, text_of(cy(c.ten_thousandths)));
}

TEST(NumberText, IsReadWithBlanksSignPointAndExponent) {
  const struct {
    const wchar_t* text;
    double number;
  } cases[] = {{L"1", 1},
               {L"+1", 1},
               {L" \t-1.5\r\n", -1.5},
               {L"\x00A0"
                L"7\x3000",
                7},
               {L".5", .5},
               {L"5.", 5},
               {L"-.5", -.5},
               {L"1e3", 1000},
               {L"1E+3", 1000},
               {L"1e-3", 0.001},
               {L"000123", 123},
               {L"0.30000000000000004", 0.30000000000000004},
               {L"123456789012345678901234567890", 123456789012345678901234567890.0},
               {L"1e308", 1e308},
               {L"0e999999999999", 0},
               {L"1e-999999999999", 0},
               {L"-1e-400", 0},
               {L"4.9e-324", 5e-324},
               {L"&HFF", 255},
               {L"&hff", 255},
               {L"-&H10", -16},
               {L"&O17", 15},
               {L"&HFFFFFFFFFFFFFFFF", 18446744073709551615.0}};
  for (const auto& c : cases) EXPECT_EQ(c.number, real_of(c.text));
}

TEST(NumberText, IsRefusedBeyondTheRangeOfADouble) {
  for (const wchar_t* text : {L"1e309", L"-1e309", L"1e999999999999", L"&H10000000000000000"}) {
    CComVariant target;
    EXPECT_EQ(DISP_E_OVERFLOW, read(text, VT_R8, &target));
    EXPECT_EQ(VT_EMPTY, target.vt);
  }
}

TEST(NumberText, MayBeVeryLong) {
  EXPECT_EQ(1, real_of(std::wstring(100000, L'0') + L"1"));
  EXPECT_EQ(1, real_of(L"0." + std::wstring(100000, L'0') + L"1e100001"));
  EXPECT_EQ(1e300, real_of(L"1" + std::wstring(300, L'0')));
  CComVariant target;
  EXPECT_EQ(DISP_E_OVERFLOW, read(L"1" + std::wstring(100000, L'0'), VT_R8, &target));
  EXPECT_EQ(S_OK, read(L"9007199254740993", VT_I8, &target));  // exact, though no double is
  EXPECT_EQ(9007199254740993, target.llVal);
}

TEST(NumberText, DoesNotDependOnTheLocale) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  const char* const with_comma[] = {"de_DE.UTF-8", "fr_FR.UTF-8", "C.UTF-8"};
  for (const char* const name : with_comma) {
    if (std::setlocale(LC_ALL, name)) break;
  }
  EXPECT_EQ(L"1.5", text_of(r8(1.5)));
  EXPECT_EQ(L"1.5", text_of(cy(15000)));
  EXPECT_EQ(1.5, real_of(L"1.5"));
  CComVariant target;
  EXPECT_EQ(S_OK, read(L"1.5", VT_CY, &target));
  EXPECT_EQ(15000, target.cyVal.int64);
  std::setlocale(LC_ALL, before.c_str());
}

// Days by hand: 2026-11-21 is day 20778 since 1970-01-01, which is day 25569.
TEST(DateText, PutsTheYearFirst) {
  const struct {
    DATE date;
    const wchar_t* text;
  } cases[] = {{46347 + 10.0 / 24, L"2026-11-21 10:00:00"},
               {46347, L"2026-11-21"},
               {25569, L"1970-01-01"},
               {1, L"1899-12-31"},
               {0, L"00:00:00"},
               {0.5, L"12:00:00"},
               {-1, L"1899-12-29"},
               {-1.25, L"1899-12-29 06:00:00"},  // the fraction counts forward within the day
               {2958465, L"9999-12-31"},
               {-657434, L"0100-01-01"},
               {36526 + 59.0 / 86400, L"2000-01-01 00:00:59"},
               {36525.9999999, L"2000-01-01"}};  // to the nearest second
  for (const auto& c : cases) EXPECT_EQ(c.text, text_of(date(c.date)));
}

TEST(DateText, IsRefusedForWhatIsNoDate) {
  for (const DATE no_date : {2958466.0, 2958465.9999999, -657435.0, 1e300, std::nan("")}) {
    const CComVariant value = date(no_date);
    CComVariant target;
    EXPECT_EQ(DISP_E_OVERFLOW, VariantChangeType(&target, &value, 0, VT_BSTR));
  }
}

TEST(DateText, IsRead) {
  const struct {
    const wchar_t* text;
    DATE date;
  } cases[] = {{L"2026-11-21", 46347},
               {L"2026/11/21", 46347},
               {L" 2026-11-21 ", 46347},
               {L"2026-1-2", 46024},
               {L"2026-11-21 12:00", 46347.5},
               {L"2026-11-21 12:00:00", 46347.5},
               {L"2026-11-21T18:00:00", 46347.75},
               {L"2024-02-29", 45351},
               {L"12:00", 0.5},
               {L"6:00:00", 0.25},
               {L"00:00:00", 0},
               {L"00:00:00.5", 0.5 / 86400},
               {L"1899-12-29 06:00:00", -1.25},
               {L"0100-01-01", -657434},
               {L"9999-12-31", 2958465}};
  for (const auto& c : cases) {
    CComVariant target;
    EXPECT_EQ(S_OK, read(c.text, VT_DATE, &target));
    EXPECT_EQ(c.date, target.date) << text_of(target);
  }
}

TEST(DateText, ReadsBackToTheSecond) {
  for (int day = -700; day < 50000; day += 97) {
    const double part = std::abs(day) % 24 / 24.0;
    const DATE value = day < 0 ? day - part : day + part;
    CComVariant target;
    ASSERT_EQ(S_OK, read(text_of(date(value)), VT_DATE, &target));
    EXPECT_NEAR(target.date, value, 0.5 / 86400);
  }
}

}  // namespace
