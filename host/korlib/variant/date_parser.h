// Reads dates in every order that scripts, pages and protocols write them in.
#pragma once

#include <string_view>

#include <korlib/hresult.h>
#include <korlib/types.h>

namespace korlib::variants {

// Reads a date, a time or both, in any order. Blanks and commas part them, and what stands in parentheses is
// passed over. Names are English, in any case, and may be shortened to three letters.
//
//   date      2030-7-4  2030/07/04              the year first when it has four digits
//             7/4/2030  7-4-2030  7/4/30  7/4   the month first; the day, when the first number is above 12
//                                               and the year has four digits
//             July 4, 2030  4 July 2030  4-Jul-30  2030 Jul 4  Jul 4  July 2030
//             Beside a month's name a number of four digits is the year; of two others, the first is the day.
//             Two digits of a year are one of 1930 to 2029. A date without a year is in this year, one
//             without a day is the first of the month. The years are 100 to 9999.
//   weekday   Thu  Thursday                     passed over, even when it is another day's
//   time      10:30  10:30:15  10:30:15.25      hours 0 to 23; alone, it is a time of day zero
//             10:30 PM  10 pm                   hours 0 to 12
//             "T" may join a time to the date in front of it.
//   zone      Z  GMT  UTC  UT  +02:00  +0200  +02  GMT+0200  EST EDT CST CDT MST MDT PST PDT
//             after the time of a date: the moment is given in local time, as every DATE is. Without a zone
//             the text is local time already.
//
// So 2030-07-04T10:00:00.000Z is read, and what a script's toString, toGMTString, toUTCString, toISOString,
// toLocaleString and toDateString give, in present engines and in the one that pages were first written for
// (Thu Jul 4 12:00:00 UTC+0200 2030), and the three dates of HTTP.
//
// DISP_E_TYPEMISMATCH for anything else: a number alone, a year and a month in digits, dates that the calendar
// does not have (2/30/2030, 13/32/2030), times that the day does not have (24:00, 23:15 PM).
HRESULT parse_date(std::wstring_view text, DATE* date);

}  // namespace korlib::variants
