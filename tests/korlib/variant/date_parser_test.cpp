// Which text is read as a date: one row a form.
#include <korlib/variant.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#include "korlib/variant/values.h"

namespace {

using namespace values;

// Days by hand: 2026-11-21 is day 46347. Three years with one leap day are 1096 more, and 9 days of November,
// 31 31 28 31 30 31 30 of December to June and 4 of July another 225: 2030-07-04 is day 47668.
constexpr DATE kDay = 47668;

constexpr DATE clock_time(double hours, double minutes = 0, double seconds = 0) {
  return ((hours * 60 + minutes) * 60 + seconds) / 86400;
}

HRESULT read(std::wstring_view source, CComVariant* target) {
  const CComVariant value(source);
  return VariantChangeType(target, &value, 0, VT_DATE);
}

// Nothing for text that is not a date, which has its own code.
std::optional<DATE> date_of(std::wstring_view source) {
  CComVariant target;
  const HRESULT hr = read(source, &target);
  if (hr == DISP_E_TYPEMISMATCH && target.vt == VT_EMPTY) return std::nullopt;
  EXPECT_EQ(S_OK, hr);
  EXPECT_EQ(VT_DATE, target.vt);
  return target.date;
}

struct Row {
  const wchar_t* text;
  DATE date;
};

template <std::size_t count>
void expect_dates(const Row (&rows)[count]) {
  for (const Row& row : rows) {
    const std::optional<DATE> date = date_of(row.text);
    ASSERT_TRUE(date) << testing::PrintToString(row.text);
    // To a hundredth of a second: a DATE of these days has bits for a millionth.
    EXPECT_NEAR(*date, row.date, 0.01 / 86400) << testing::PrintToString(row.text);
  }
}

// The local time of the process, as a rule that needs no files: "CET-1CEST,M3.5.0,M10.5.0/3" is an hour ahead
// of UTC, in summer two.
class LocalTime {
 public:
  explicit LocalTime(const char* rule) {
    if (const char* before = std::getenv("TZ")) before_ = before;
    setenv("TZ", rule, 1);
    tzset();
  }
  ~LocalTime() {
    before_ ? setenv("TZ", before_->c_str(), 1) : unsetenv("TZ");
    tzset();
  }
  LocalTime(const LocalTime&) = delete;

 private:
  std::optional<std::string> before_;
};
constexpr const char* kCentralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";

TEST(DateReading, TakesNumbersInTheOrderOfTheYearsPlace) {
  const Row rows[] = {{L"2030-07-04", kDay},    {L"2030-7-4", kDay},      {L"2030/07/04", kDay}, {L"2030-7-04", kDay},
                      {L"7/4/2030", kDay},      {L"07/04/2030", kDay},    {L"7-4-2030", kDay},   {L" 7/4/2030 ", kDay},
                      {L"7/13/2030", kDay + 9}, {L"13/7/2030", kDay + 9},  // there is no month 13
                      {L"12/12/2030", 47829},  // 27 more of July, 31 30 31 30 and 12: day 47668 + 161
                      {L"2/29/2024", 45351}};
  expect_dates(rows);
}

TEST(DateReading, TakesNamesOfMonths) {
  const Row rows[] = {
      {L"July 4, 2030", kDay},    {L"July 4 2030", kDay},     {L"Jul 4, 2030", kDay},
      {L"JULY 4,2030", kDay},     {L"4 Jul 2030", kDay},      {L"4 july, 2030", kDay},
      {L"04-Jul-2030", kDay},     {L"Jul-04-2030", kDay},     {L"2030 Jul 4", kDay},
      {L"2030-Jul-04", kDay},     {L"4Jul2030", kDay},        {L"Thursday, July 04, 2030", kDay},
      {L"Thu Jul 04 2030", kDay}, {L"Fri, 4 Jul 2030", kDay},  // it was a Thursday
      {L"July 2030", kDay - 3},   {L"2030 July", kDay - 3},   {L"July 4 (a holiday (there)), 2030", kDay}};
  expect_dates(rows);
  // One of each month, by the lengths of the months before it: 2030-01-01 is day 47668 - 184 = 47484.
  const wchar_t* const names[] = {L"January", L"February", L"March",     L"April",   L"May",      L"June",
                                  L"July",    L"August",   L"September", L"October", L"November", L"December"};
  const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  DATE first = 47484;
  for (int month = 0; month < 12; ++month) {
    const std::wstring name(names[month]);
    EXPECT_EQ(first, date_of(name + L" 1, 2030"));
    EXPECT_EQ(first, date_of(L"1 " + name.substr(0, 3) + L" 2030"));
    first += lengths[month];
  }
  for (const wchar_t* day : {L"Mon", L"tue", L"Wed", L"Thurs", L"FRI", L"Sat", L"Sunday"}) {
    EXPECT_EQ(kDay, date_of(std::wstring(day) + L" Jul 4 2030"));
  }
}

// 1930-07-04 is 100 years with 25 leap days (1932 to 2028) earlier: 36525 days.
TEST(DateReading, PutsYearsOfTwoDigitsBetween1930And2029) {
  const Row rows[] = {{L"7/4/30", kDay - 36525},        {L"7/4/29", kDay - 365},     {L"7/4/99", kDay - 31 * 365 - 8},
                      {L"7/4/00", kDay - 30 * 365 - 7}, {L"4 Jul 30", kDay - 36525}, {L"July 4, 29", kDay - 365},
                      {L"04-Jul-30", kDay - 36525},     {L"July 30 04", 38198}};
  expect_dates(rows);
}

TEST(DateReading, PutsADateWithoutAYearInThisYear) {
  const auto year_now = [] {
    const std::time_t now = std::time(nullptr);
    return std::to_wstring(1900 + std::localtime(&now)->tm_year);
  };
  for (const wchar_t* text : {L"7/4", L"July 4", L"4 Jul", L"Jul-4"}) {
    std::wstring year = year_now();
    std::optional<DATE> date = date_of(text);
    if (year != year_now()) {  // it ended in between
      year = year_now();
      date = date_of(text);
    }
    ASSERT_TRUE(date);
    EXPECT_EQ(date, date_of(year + L"-07-04")) << testing::PrintToString(text);
  }
}

TEST(DateReading, TakesTimes) {
  const Row rows[] = {{L"10:30", clock_time(10, 30)},
                      {L"6:00", 0.25},
                      {L"10:30:15", clock_time(10, 30, 15)},
                      {L"10:30:15.25", clock_time(10, 30, 15.25)},
                      {L"10:30:15.123456789", clock_time(10, 30, 15.123456789)},
                      {L"00:00", 0},
                      {L"23:59:59", clock_time(23, 59, 59)},
                      {L"10:30 PM", clock_time(22, 30)},
                      {L"10:30PM", clock_time(22, 30)},
                      {L"10:30:15 pm", clock_time(22, 30, 15)},
                      {L"10:30 AM", clock_time(10, 30)},
                      {L"12:00 AM", 0},
                      {L"12:30 PM", clock_time(12, 30)},
                      {L"0:30 PM", clock_time(12, 30)},
                      {L"10 PM", clock_time(22)},
                      {L"7am", clock_time(7)},
                      {L"12:00:00\x202FPM", 0.5}};
  expect_dates(rows);
}

TEST(DateReading, TakesADateAndATimeInAnyOrder) {
  const Row rows[] = {{L"7/4/2030 10:30", kDay + clock_time(10, 30)},
                      {L"7/4/2030, 10:30:15 PM", kDay + clock_time(22, 30, 15)},
                      {L"10:30 7/4/2030", kDay + clock_time(10, 30)},
                      {L"10:30 PM 4 Jul 2030", kDay + clock_time(22, 30)},
                      {L"July 4, 2030 10:30 PM", kDay + clock_time(22, 30)},
                      {L"July 4, 2030, 10 PM", kDay + clock_time(22)},
                      {L"4 Jul 2030 10:30", kDay + clock_time(10, 30)},
                      {L"Thu Jul  4 10:30:15 2030", kDay + clock_time(10, 30, 15)},
                      {L"2030-07-04T10:30", kDay + clock_time(10, 30)},
                      {L"2030-07-04t10:30:15.5", kDay + clock_time(10, 30, 15.5)},
                      {L"2030-07-04 12:00:00", kDay + 0.5},
                      // before day zero the fraction counts forward too
                      {L"12/29/1899 6:00", -1.25},
                      {L"29 Dec 1899 6 AM", -1.25}};
  expect_dates(rows);
}

TEST(DateReading, GivesAMomentOfAZoneInLocalTime) {
  const LocalTime zone(kCentralEurope);
  const DATE noon = kDay + 0.5;  // two hours ahead in July
  const Row rows[] = {{L"2030-07-04T10:00:00Z", noon},
                      {L"2030-07-04t10:00:00z", noon},
                      {L"2030-07-04T10:00:00.000Z", noon},
                      {L"2030-07-04T10:00:00.25Z", noon + clock_time(0, 0, 0.25)},
                      {L"2030-07-04T12:00:00+02:00", noon},
                      {L"2030-07-04T10:00:00+02:00", kDay + clock_time(10)},
                      {L"2030-07-04T05:00-05:00", noon},
                      {L"2030-07-04T15:30:00+0530", noon},
                      {L"2030-07-04 13:00+03", noon},
                      {L"7/4/2030 10:00 AM GMT", noon},
                      {L"Thu, 04 Jul 2030 10:00:00 GMT", noon},
                      {L"Thu, 4 Jul 2030 10:00:00 UTC", noon},
                      {L"Thu, 04 Jul 2030 10:00:00 UT", noon},
                      {L"Thu, 04 Jul 2030 03:00:00 -0700", noon},
                      {L"Thu Jul 04 2030 12:00:00 GMT+0200 (Central European Summer Time)", noon},
                      {L"Thu Jul 4 12:00:00 UTC+0200 2030", noon},
                      {L"Thu Jul 4 06:00:00 EDT 2030", noon},
                      {L"Wednesday, 04-Jul-29 10:00:00 GMT", noon - 365},
                      // in January one hour ahead, and over the ends of days and years
                      {L"2030-01-04T10:00:00Z", 47487 + clock_time(11)},
                      {L"2030-01-04T23:30:00Z", 47488 + clock_time(0, 30)},
                      {L"2030-12-31T23:30:00Z", 47849 + clock_time(0, 30)},
                      {L"2030-01-01T00:30:00+03:00", 47483 + clock_time(22, 30)}};
  expect_dates(rows);
  const struct {
    const wchar_t* name;
    int hours;
  } zones[] = {{L"EST", 5}, {L"EDT", 4}, {L"CST", 6}, {L"CDT", 5}, {L"MST", 7}, {L"MDT", 6}, {L"PST", 8}, {L"PDT", 7}};
  for (const auto& z : zones) {
    const std::optional<DATE> date = date_of(std::wstring(L"2030-07-04 00:00 ") + z.name);
    ASSERT_TRUE(date);
    EXPECT_NEAR(*date, kDay + clock_time(z.hours + 2), 1e-9);
  }
  // Without a zone the text is local time already.
  EXPECT_EQ(noon, date_of(L"2030-07-04T12:00:00"));
}

TEST(DateReading, CountsForwardFromTheDayBeforeDayZeroInAZoneAsWell) {
  const LocalTime zone("XYZ+6");  // six hours behind
  EXPECT_EQ(-1.75, date_of(L"1899-12-30T00:00:00Z"));
  EXPECT_EQ(0.75, date_of(L"1899-12-31T00:00:00Z"));
  EXPECT_EQ(-1.5, date_of(L"1899-12-29T18:00:00Z"));
}

TEST(DateReading, KnowsSummerTimeInYearsFarAhead) {
  const LocalTime zone(kCentralEurope);
  for (const wchar_t* year : {L"2030", L"2300", L"3000", L"5000", L"9000"}) {
    const std::wstring text(year);
    EXPECT_EQ(date_of(text + L"-07-04 12:00:00"), date_of(text + L"-07-04T10:00:00Z"));
    EXPECT_EQ(date_of(text + L"-01-04 11:00:00"), date_of(text + L"-01-04T10:00:00Z"));
  }
}

// 1899-12-25 is five days before day zero.
TEST(DateReading, CarriesAFractionOfTheLastSecondIntoTheNextDay) {
  EXPECT_EQ(-4, date_of(L"1899-12-25 23:59:59.99999999999999999999"));
  EXPECT_EQ(0, date_of(L"1899-12-29 23:59:59.99999999999999999999"));
  EXPECT_EQ(kDay + 1, date_of(L"2030-07-04 23:59:59.99999999999999999999"));
  EXPECT_EQ(std::nullopt, date_of(L"9999-12-31 23:59:59.99999999999999999999"));
}

TEST(DateReading, RefusesMomentsBeyondTheYearsOfADate) {
  const LocalTime zone("XYZ-6");  // six hours ahead
  EXPECT_EQ(2958465 + clock_time(23), date_of(L"9999-12-31T17:00:00Z"));
  EXPECT_EQ(std::nullopt, date_of(L"9999-12-31T18:00:00Z"));
  EXPECT_EQ(std::nullopt, date_of(L"0100-01-01T00:00:00+07:00"));
}

TEST(DateReading, RefusesWhatIsNoDate) {
  for (const wchar_t* text :
       {// days and months that do not exist
        L"13/32/2030", L"13/13/2030", L"2/30/2030", L"30/2/2030", L"Feb 30, 2030", L"2/29/2030", L"2029-02-29",
        L"2030-13-01", L"2030-13-07", L"2030-00-10", L"2030-07-32", L"0/4/2030", L"7/0/2030", L"July 0, 2030",
        L"July 32, 2030", L"July 32", L"7/32", L"13/7", L"0099-01-01", L"7/4/0099", L"7/4/12030", L"7/4/203", L"7/4/3",
        // what could be read in more than one way, or in none
        L"26-11-21", L"30/7/4", L"2030-07", L"2030-07/04", L"7/4-2030", L"7/4/", L"7//4", L"/7/4", L"7-", L"10",
        L"2030", L"4 2030", L"July", L"Thursday", L"Jul 4 Jul", L"Jul 4 5 6", L"Jul 4 2030 2031", L"Jul 123",
        L"7/4/2030 8/5/2030", L"7/4/2030 4", L"Jul 7/4/2030", L"7/4/2030 Jul", L"4 Ju 2030", L"4 Julie 2030",
        L"4 Juli 2030", L"Thu Fri 7/4/2030", L"--7/4/2030", L"4--Jul-2030", L"-4 Jul 2030", L"7.4.2030", L"07042030",
        L"Juillet 4, 2030",
        // times
        L"24:00", L"10:60", L"10:00:60", L"10:0", L"10:", L":30", L"10:00:", L"10:00:0", L"10:00:00.", L"10:00.5",
        L"100:00", L"13:00 PM", L"23:15 PM", L"13 AM", L"10:00 PM AM", L"10:00 10:00", L"PM", L"10:00 10 PM", L"100 PM",
        L"2030-07-04T", L"T10:00", L"10:00T2030-07-04", L"2030-07-04TT10:00", L"10:00x", L"2030-07-04x",
        // zones
        L"10:00Z", L"10:00 GMT", L"2030-07-04Z", L"2030-07-04 GMT", L"7/4/2030 10:00 XYZ", L"7/4/2030 10:00 GMT GMT",
        L"7/4/2030 10:00+2", L"7/4/2030 10:00+24:00", L"7/4/2030 10:00+02:60", L"7/4/2030 10:00+0260",
        L"7/4/2030 10:00+02:0", L"7/4/2030 10:00+", L"7/4/2030 10:00+020", L"7/4/2030 10:00Z+02:00",
        L"7/4/2030 10:00 EST-0500", L"7/4/2030 10:00 GMT+02+02", L"7/4/2030 10:00+02:00 GMT", L"7/4/2030 +02:00 10:00",
        // and the rest
        L"", L" ", L",", L"(7/4/2030)", L"7/4/2030 (", L"7/4/2030 )", L"7/4/2030 ((x)", L"x", L"\x416"}) {
    EXPECT_EQ(std::nullopt, date_of(text)) << testing::PrintToString(text);
  }
}

TEST(DateReading, RefusesTextWithANul) { EXPECT_EQ(std::nullopt, date_of(std::wstring_view(L"7/4/2030\0", 9))); }

TEST(DateReading, MayBeVeryLong) {
  EXPECT_EQ(kDay, date_of(std::wstring(100000, L' ') + L"7/4/2030"));
  EXPECT_EQ(kDay, date_of(std::wstring(100000, L'(') + std::wstring(100000, L')') + L"7/4/2030"));
  EXPECT_EQ(clock_time(10, 30, 15), date_of(L"10:30:15." + std::wstring(100000, L'0') + L"1"));
  EXPECT_EQ(std::nullopt, date_of(std::wstring(100000, L'1') + L"/4/2030"));
  EXPECT_EQ(std::nullopt, date_of(std::wstring(100000, L'-') + L"7/4/2030"));
  EXPECT_EQ(std::nullopt, date_of(std::wstring(100000, L'a') + L" 4 2030"));
}

}  // namespace
