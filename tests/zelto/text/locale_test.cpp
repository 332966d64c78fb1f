#include "text/locale.h"

#include <gtest/gtest.h>

#include <thread>

namespace zelto {
namespace {

// Locales by the numbers that are published for them.
constexpr LONG kGerman = 1031;
constexpr LONG kAmerican = 1033;
constexpr LONG kJapanese = 1041;
constexpr LONG kThai = 1054;
constexpr LONG kBritish = 2057;

// Days since 1899-12-30: 1970-01-01 is day 25569, 2001-02-03 is 31 years, 8 leap days and 33 days on.
constexpr double kDay = 25569 + 31 * 365 + 8 + 33;
constexpr double kTime = (4 * 3600 + 5 * 60 + 6) / 86400.0;

std::wstring date(LONG lcid, double value) { return LocaleText::of(lcid)->date(value); }

TEST(Locale, KnowsTheNumbersOfLocalesAndOfTheNeutralForm) {
  for (const LONG known : {kGerman, kAmerican, kJapanese, kThai, kBritish, 1046, 2052, 3082, 9}) {
    EXPECT_TRUE(is_locale(known)) << known;
    EXPECT_TRUE(LocaleText::of(known)) << known;
  }
  for (const LONG neutral : {2048, 1024, 127}) {
    EXPECT_TRUE(is_locale(neutral)) << neutral;
    EXPECT_FALSE(LocaleText::of(neutral)) << neutral;
  }
  // 12345 has the low bits of Hindi, 2065 those of Japanese; 4096 is "some locale without a number".
  for (const LONG unknown : {0, -1, 99999, 12345, 2065, 4096, 65535, 1 << 30}) {
    EXPECT_FALSE(is_locale(unknown)) << unknown;
    EXPECT_FALSE(LocaleText::of(unknown)) << unknown;
  }
}

TEST(Locale, WritesDatesInItsShortFormWithTheWholeYear) {
  const struct {
    LONG lcid;
    double date;
    const wchar_t* text;
  } rows[] = {
      {kAmerican, kDay + kTime, L"2/3/2001 4:05:06 AM"},
      {kAmerican, kDay + kTime + 0.5, L"2/3/2001 4:05:06 PM"},
      {kAmerican, kDay, L"2/3/2001"},
      {kAmerican, kTime, L"4:05:06 AM"},
      {kAmerican, 0, L"12:00:00 AM"},
      {kGerman, kDay + kTime, L"03.02.2001 04:05:06"},
      {kBritish, kDay + kTime, L"03/02/2001 04:05:06"},
      {kJapanese, kDay + kTime, L"2001/02/03 4:05:06"},
      {kThai, kDay, L"3/2/2544"},  // the Buddhist year is 543 ahead
      // Before day zero the time still counts forwards: 1899-12-29, six in the morning.
      {kGerman, -1.25, L"29.12.1899 06:00:00"},
      // The last half second belongs to the next day.
      {kGerman, kDay + 1 - 0.4 / 86400, L"04.02.2001"},
      // No day is Julian, 1582-10-14 exists. Day zero is Julian day number 2415019, 1582-10-15 is 2299161.
      {kGerman, 2299161 - 2415019, L"15.10.1582"},
      {kGerman, 2299160 - 2415019, L"14.10.1582"},
      {kGerman, -657434, L"01.01.0100"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.text, date(row.lcid, row.date));
}

TEST(Locale, PutsItsDecimalMarkIntoNumbers) {
  const struct {
    LONG lcid;
    const wchar_t* neutral;
    const wchar_t* text;
  } rows[] = {
      {kAmerican, L"1234567.5", L"1234567.5"},
      {kGerman, L"1234567.5", L"1234567,5"},
      {kGerman, L"-0.25", L"-0,25"},
      {kGerman, L"1.5E+21", L"1,5E+21"},
      {kGerman, L"7", L"7"},
      {kGerman, L"NaN", L"NaN"},
      {kGerman, L"-Infinity", L"-Infinity"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.text, LocaleText::of(row.lcid)->number(row.neutral));
}

TEST(Locale, IsOneOfItsThread) {
  EXPECT_EQ(L"03.02.2001", date(kGerman, kDay));
  std::thread([] { EXPECT_EQ(L"2/3/2001", date(kAmerican, kDay)); }).join();
  EXPECT_EQ(L"03.02.2001", date(kGerman, kDay));
  EXPECT_EQ(L"2/3/2001", date(kAmerican, kDay));
}

}  // namespace
}  // namespace zelto
