// Dates, their parts and their words. Expected values are those of the public language reference ("Functions",
// VBScript) and of the calendar.
#include "zelto/script/vbscript/library_fixture.h"

namespace test {
namespace {

using VbDates = VbLibraryTest;

TEST_F(VbDates, AreMadeOfTheirParts) {
  expect({
      {L"dateserial(1990 - 20, 8 - 2, 1 - 1)", "Date 1970-05-31"},
      {L"dateserial(2024, 2, 30)", "Date 2024-03-01"},
      {L"dateserial(2024, 0, 1)", "Date 2023-12-01"},
      {L"dateserial(29, 1, 1)", "Date 2029-01-01"},
      {L"dateserial(30, 1, 1)", "Date 1930-01-01"},
      {L"dateserial(10000, 1, 1)", "error 5"},
      {L"cdbl(dateserial(1899, 12, 30))", "Double 0"},
      {L"cdbl(dateserial(1970, 1, 1))", "Double 25569"},
      {L"timeserial(12 - 6, -15, 0)", "Date 05:45:00"},
      {L"timeserial(25, 0, 0)", "Date 1899-12-31 01:00:00"},
      {L"datevalue('September 11, 1963')", "Date 1963-09-11"},
      {L"timevalue('4:35:17 PM')", "Date 16:35:17"},
      {L"cdbl(datevalue('2024-01-01 18:00'))", "Double 45292"},
      {L"datevalue('no date')", "error 13"},
      {L"datevalue(null)", "Null"},
  });
}

TEST_F(VbDates, AreTakenApart) {
  expect({
      {L"array(year('October 19, 1962'), month('October 19, 1962'), day('October 19, 1962'))", "Variant() 1962|10|19"},
      {L"array(hour('4:35:17 PM'), minute('4:35:17 PM'), second('4:35:17 PM'))", "Variant() 16|35|17"},
      {L"array(year(0), month(0), day(0))", "Variant() 1899|12|30"},
      {L"array(year(-1.25), month(-1.25), day(-1.25), hour(-1.25))", "Variant() 1899|12|29|6"},
      {L"array(year(-657434), month(-657434), day(-657434))", "Variant() 100|1|1"},
      {L"array(year(2958465), month(2958465), day(2958465))", "Variant() 9999|12|31"},
      {L"array(year(45291.9999999), day(45291.9999999))", "Variant() 2024|1"},
      {L"array(weekday('2024-01-01'), weekday('2024-01-01', 2), weekday('2024-01-07', 2))", "Variant() 2|1|7"},
      {L"weekday('2024-01-01', 8)", "error 5"},
      {L"year(3000000)", "error 6"},
      {L"year(null)", "Null"},
      {L"datepart('q', '2024-05-01')", "Integer 2"},
      {L"datepart('y', '2024-03-01')", "Integer 61"},
      {L"datepart('w', '2024-01-01')", "Integer 2"},
      {L"datepart('n', '10:59:30')", "Integer 59"},
      {L"datepart('x', '2024-01-01')", "error 5"},
      {L"datepart('D', '2024-01-31')", "Integer 31"},
  });
}

// Weeks by the rules that the reference names vbFirstJan1, vbFirstFourDays and vbFirstFullWeek; those of four days that
// begin on Monday are the weeks of ISO 8601.
TEST_F(VbDates, CountWeeks) {
  expect({
      {L"datepart('ww', '2024-01-06')", "Integer 1"},
      {L"datepart('ww', '2024-01-07')", "Integer 2"},
      {L"datepart('ww', '2024-12-31')", "Integer 53"},
      {L"datepart('ww', '2023-01-01', 2, 2)", "Integer 52"},
      {L"datepart('ww', '2024-12-30', 2, 2)", "Integer 1"},
      {L"datepart('ww', '2020-12-31', 2, 2)", "Integer 53"},
      {L"datepart('ww', '2021-01-03', 2, 2)", "Integer 53"},
      {L"datepart('ww', '2021-01-04', 2, 2)", "Integer 1"},
      {L"datepart('ww', '2024-01-06', 1, 3)", "Integer 53"},
      {L"datepart('ww', '2024-01-07', 1, 3)", "Integer 1"},
      {L"datepart('ww', '2024-01-07', 1, 4)", "error 5"},
  });
}

TEST_F(VbDates, AreMovedByIntervals) {
  expect({
      {L"dateadd('m', 1, '1995-01-31')", "Date 1995-02-28"},
      {L"dateadd('m', 1, '1996-01-31')", "Date 1996-02-29"},
      {L"dateadd('m', -1, '2024-03-31 10:00')", "Date 2024-02-29 10:00:00"},
      {L"dateadd('yyyy', 1, '2024-02-29')", "Date 2025-02-28"},
      {L"dateadd('q', 1, '2024-11-30')", "Date 2025-02-28"},
      {L"dateadd('d', 1, '2024-02-28')", "Date 2024-02-29"},
      {L"dateadd('y', 1, '2024-02-28')", "Date 2024-02-29"},
      {L"dateadd('ww', 1, '2024-02-28')", "Date 2024-03-06"},
      {L"dateadd('h', 36, '2024-02-28')", "Date 2024-02-29 12:00:00"},
      {L"dateadd('n', -1, '2024-03-01')", "Date 2024-02-29 23:59:00"},
      {L"dateadd('s', 86399, '2024-03-01')", "Date 2024-03-01 23:59:59"},
      {L"dateadd('d', 2.6, '2024-03-01')", "Date 2024-03-04"},
      {L"dateadd('h', -6, '1899-12-30')", "Date 1899-12-29 18:00:00"},
      {L"dateadd('yyyy', 8000, '2024-03-01')", "error 5"},
      {L"dateadd('d', 1, null)", "Null"},
      {L"dateadd('d', null, '2024-03-01')", "error 94"},
  });
}

TEST_F(VbDates, DifferByTheBoundariesBetweenThem) {
  expect({
      {L"datediff('yyyy', '1999-12-31', '2000-01-01')", "Integer 1"},
      {L"datediff('q', '2024-03-31', '2024-04-01')", "Integer 1"},
      {L"datediff('m', '2024-01-31', '2024-02-01')", "Integer 1"},
      {L"datediff('m', '2024-02-01', '2023-12-31')", "Integer -2"},
      {L"datediff('d', '2024-02-28 23:59:59', '2024-03-01')", "Integer 2"},
      {L"datediff('w', '2024-01-01', '2024-01-14')", "Integer 1"},
      {L"datediff('w', '2024-01-01', '2024-01-15')", "Integer 2"},
      {L"datediff('ww', '2024-01-06', '2024-01-07')", "Integer 1"},
      {L"datediff('ww', '2024-01-06', '2024-01-07', 2)", "Integer 0"},
      {L"datediff('h', '10:59:59', '11:00:00')", "Integer 1"},
      {L"datediff('n', '10:00:00', '09:58:30')", "Integer -2"},
      {L"datediff('s', '2024-02-29', '2024-03-01')", "Long 86400"},
      {L"datediff('s', '1900-01-01', '2024-03-01')", "error 6"},
      {L"datediff('d', null, '2024-03-01')", "Null"},
  });
}

TEST_F(VbDates, HaveNames) {
  expect({
      {L"monthname(10)", "String October"},
      {L"monthname(10, true)", "String Oct"},
      {L"monthname(13)", "error 5"},
      {L"weekdayname(6, true)", "String Fri"},
      {L"weekdayname(1)", "String Sunday"},
      {L"weekdayname(1, false, 2)", "String Monday"},
      {L"weekdayname(8)", "error 5"},
      {L"formatdatetime('2026-11-21 16:05:09')", "String 2026-11-21 16:05:09"},
      {L"formatdatetime('2026-11-21 16:05:09', 1)", "String Saturday, November 21, 2026"},
      {L"formatdatetime('2026-11-21 16:05:09', 2)", "String 2026-11-21"},
      {L"formatdatetime('2026-11-21 16:05:09', 3)", "String 16:05:09"},
      {L"formatdatetime('2026-11-21 16:05:09', 4)", "String 16:05"},
      {L"formatdatetime('2026-11-21', 5)", "error 5"},
  });
}

TEST_F(VbDates, FollowTheLocaleOfTheScript) {
  expect({
      {L"(setlocale(1033), formatdatetime('2026-11-21 16:05:09', 1))", "String Saturday, November 21, 2026"},
      {L"(setlocale(1033), cstr(cdate('2026-11-21 16:05:09')))", "String 11/21/2026 4:05:09 PM"},
      {L"(setlocale(1031), formatdatetime('2026-11-21', 1))", "String Samstag, 21. November 2026"},
      {L"(setlocale(1031), formatdatetime('2026-11-21', 2))", "String 21.11.2026"},
      {L"(setlocale(1031), monthname(3))", "String M\xC3\xA4rz"},
      {L"(setlocale('de-DE'), getlocale())", "Integer 1031"},
      {L"(setlocale(1031), weekdayname(1))", "String Montag"},
      {L"getlocale()", "Integer 2048"},
      {L"setlocale(99999)", "error 447"},
      {L"(setlocale(1031), cstr(1.5))", "String 1,5"},
      {L"(setlocale(1031), eq(cdbl('1,5'), 1.5))", "Boolean True"},
      {L"(setlocale(1031), eq(cdbl('1.234,5'), 1234.5))", "Boolean True"},
  });
}

TEST_F(VbDates, TellTheTime) {
  expect({
      {L"typename(now())", "String Date"},
      {L"eq(add(date(), 0), int(now()))", "Boolean True"},
      {L"typename(timer())", "String Single"},
      {L"and(ge(timer(), 0), lt(timer(), 86400))", "Boolean True"},
      {L"lt(time(), 1)", "Boolean True"},
  });
}

TEST_F(VbDates, AndNumbersAreFormatted) {
  expect({
      {L"formatnumber(1234567.891)", "String 1,234,567.89"},
      {L"formatnumber(mul(4, atn(1)), 3)", "String 3.142"},
      {L"formatnumber(-0.5, 1, 0)", "String -.5"},
      {L"formatnumber(-1234.5, 1, -1, -1, 0)", "String (1234.5)"},
      {L"formatnumber(2.5, 0)", "String 3"},
      {L"formatnumber(999.995)", "String 1,000.00"},
      {L"formatnumber(0)", "String 0.00"},
      {L"formatnumber(-0.001)", "String 0.00"},
      {L"formatnumber('x')", "error 13"},
      {L"formatnumber(null)", "error 94"},
      {L"formatnumber(1, -2)", "error 5"},
      {L"formatnumber(1e20, 0)", "String 100,000,000,000,000,000,000"},
      {L"formatpercent(2/32)", "String 6.25%"},
      {L"formatpercent(0.12345, 1)", "String 12.3%"},
      {L"formatcurrency(1000)", "String $1,000.00"},
      {L"formatcurrency(-1000)", "String ($1,000.00)"},
      {L"(setlocale(1031), formatnumber(1234567.891))", "String 1.234.567,89"},
      {L"(setlocale(1031), formatcurrency(-1234.5))", "String -1.234,50\xC2\xA0\xE2\x82\xAC"},
      {L"(setlocale(1041), formatcurrency(1234.5))",
       "String \xEF\xBF\xA5"
       "1,235"},
  });
}

}  // namespace
}  // namespace test
