// Dates in text: what is read is a date and comes back to the second, in whichever letters and blanks it was written;
// dates written in each of the ways that pages and protocols know are read as the day and time that they name.
#include <array>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>

#include <fmt/format.h>
#include <fmt/xchar.h>
#include <korlib/comvariant.h>

#include "conversion.h"
#include "text/charset.h"
#include "text/http_date.h"
#include "text/locale.h"
#include "text_input.h"

namespace {

constexpr double kFirst = -657434;
constexpr double kBeyond = 2958466;

using fuzz::convert;
using fuzz::Converted;
Converted read(std::wstring_view text) { return convert(CComVariant(text), VT_DATE); }

CComVariant date_value(double date) {
  CComVariant value;
  value.vt = VT_DATE;
  value.date = date;
  return value;
}

// Seconds since day zero, to the nearest one: the part of a date counts forward in its day, before day zero as well.
double seconds_of(double date) {
  const double day = std::trunc(date);
  return day * 86400 + std::round(std::abs(date - day) * 86400);
}

// What is written is to the second, and is that second when it is read.
void check_written(double date) {
  const Converted text = convert(date_value(date), VT_BSTR);
  const bool is_date = date > kFirst - 1 && date < kBeyond && seconds_of(date) < kBeyond * 86400;
  fuzz::require(text.hr == (is_date ? S_OK : DISP_E_OVERFLOW), "a date has a text, nothing else has");
  if (!is_date) return;
  const Converted back = read(korlib::view_of(text.value.bstrVal));
  fuzz::require(back.hr == S_OK && seconds_of(back.value.date) == seconds_of(date), "it comes back to the second");
  const Converted again = convert(back.value, VT_BSTR);
  fuzz::require(korlib::view_of(again.value.bstrVal) == korlib::view_of(text.value.bstrVal), "as the same text");
}

void check_locales(double date) {
  static const zelto::LocaleText locales[] = {zelto::LocaleText("de_DE"), zelto::LocaleText("en_US"),
                                              zelto::LocaleText("ja_JP"), zelto::LocaleText("fa_IR"),
                                              zelto::LocaleText("th_TH")};
  const double day = std::floor(seconds_of(date) / 86400);
  const double part = (seconds_of(date) - day * 86400) / 86400;
  for (const zelto::LocaleText& locale : locales) {
    const std::wstring text = locale.date(date);
    fuzz::require(!text.empty(), "each locale has a text");
    fuzz::require(text == locale.date(day < 0 ? day - part : day + part), "which is that of its second");
  }
}

std::wstring cased(std::wstring_view text, bool is_upper) {
  std::wstring out;
  for (const wchar_t c : text) {
    const bool is_letter = (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z');
    out += is_letter ? static_cast<wchar_t>(is_upper ? c & ~0x20 : c | 0x20) : c;
  }
  return out;
}

void check_read(const std::wstring& text) {
  const Converted found = read(text);
  fuzz::require(found.hr == S_OK || found.hr == DISP_E_TYPEMISMATCH, "a date or none");
  for (const std::wstring& other : {cased(text, true), cased(text, false), L" ,\t" + text, text + L"\n (a (b)) ,"}) {
    const Converted same = read(other);
    fuzz::require(same.hr == found.hr, "letter case, blanks and remarks count for nothing");
    if (found.hr == S_OK) fuzz::require(same.value.date == found.value.date, "nor for the date");
  }
  if (found.hr != S_OK) return;
  const double date = found.value.date;
  fuzz::require(date > kFirst - 1 && date < kBeyond, "a year from 100 to 9999");
  if (seconds_of(date) >= kBeyond * 86400) return;  // the last half second
  check_written(date);
  check_locales(date);
}

// A number of days since 1899-12-30, by the calendar.
int day_number(int year, int month, int day) {
  const auto is_leap = [](int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; };
  constexpr std::array kDays{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  int number = day - 1 + (month > 2 && is_leap(year) ? 1 : 0);
  for (int m = 1; m < month; ++m) number += kDays[static_cast<std::size_t>(m) - 1];
  const int before = year - 1;
  number += before * 365 + before / 4 - before / 100 + before / 400;
  return number - 693593;  // of 1899-12-30
}

// A date and a time drawn from the bytes, in one of the ways in which they are written.
void check_named(const std::uint8_t* data) {
  static constexpr std::array kMonths{L"January", L"February", L"March",     L"April",   L"May",      L"June",
                                      L"July",    L"August",   L"September", L"October", L"November", L"December"};
  static constexpr std::array kWeekdays{L"Mon", L"Tuesday", L"wed", L"THU", L"Friday", L"Sat", L"sunday"};
  const int year = 100 + (data[0] * 256 + data[1]) % 9900;
  const int month = 1 + data[2] % 12;
  const int day = 1 + data[3] % 28;
  const int hour = data[4] % 24;
  const int minute = data[5] % 60;
  const int second = data[6] % 60;
  const std::wstring whole = kMonths[static_cast<std::size_t>(month) - 1];
  const std::wstring name = whole.substr(0, 3);
  const std::wstring weekday = kWeekdays[data[4] % 7];
  const std::wstring clock = fmt::format(L"{:02}:{:02}:{:02}", hour, minute, second);
  const std::wstring half =
      fmt::format(L"{}:{:02}:{:02} {}", hour % 12 == 0 ? 12 : hour % 12, minute, second, hour < 12 ? L"AM" : L"pm");
  const std::wstring forms[] = {
      fmt::format(L"{:04}-{:02}-{:02} {}", year, month, day, clock),
      fmt::format(L"{:04}/{}/{}T{}", year, month, day, clock),
      fmt::format(L"{}/{}/{:04} {}", month, day, year, half),
      fmt::format(L"{} {}-{}-{:04}", clock, month, day, year),
      fmt::format(L"{}, {} {}, {:04}, {}", weekday, whole, day, year, clock),
      fmt::format(L"{} {} {:04} {}", day, name, year, half),
      fmt::format(L"{}-{}-{:04} {}", day, name, year, clock),
      fmt::format(L"{:04} {} {} {}", year, whole, day, clock),
      fmt::format(L"{} {} {:02} {} {:04}", weekday, name, day, clock, year),
      fmt::format(L"{:04}-{:02}-{:02}T{}.000Z", year, month, day, clock),
      fmt::format(L"{} {} {} {} UTC+0000 {:04}", weekday, name, day, clock, year),
      fmt::format(L"{}, {:02} {} {:04} {} GMT", weekday, day, name, year, clock),
  };
  const int number = day_number(year, month, day);
  const double seconds = (hour * 60 + minute) * 60 + second;
  const double expected = number < 0 ? number - seconds / 86400 : number + seconds / 86400;
  for (const std::wstring& form : forms) {
    const Converted found = read(form);
    fuzz::require(found.hr == S_OK && found.value.date == expected, "the day and time that are named");
  }
  // A fraction that is as good as a second, also where that is of the next day.
  for (const wchar_t* zone : {L"", L"Z"}) {
    const std::wstring nearly = fmt::format(L"{} {} {:04} {}.99999999999999999999{}", day, name, year, clock, zone);
    const Converted found = read(nearly);
    fuzz::require(found.hr == S_OK && seconds_of(found.value.date) == number * 86400.0 + seconds + 1, "nearly later");
  }
}

void check_http(std::string_view text, double date) {
  if (const auto moment = zelto::parse_http_date(text)) {
    fuzz::require(zelto::http_date(*moment) == text, "a header's date is in its one form");
    const Converted found = read(zelto::to_wide(text));
    fuzz::require(found.hr == S_OK || text.substr(12, 4) < "0100", "which scripts read");
    const bool is_clamped = text.substr(12, 4) < "1602";
    if (!is_clamped) fuzz::require(zelto::moment_of(found.value.date) == *moment, "as the same moment");
  }
  const std::time_t moment = zelto::moment_of(date);
  fuzz::require(zelto::parse_http_date(zelto::http_date_of(date)) == moment, "every date has one in a header");
  if (date > -109205 && date < kBeyond - 1) {
    fuzz::require(static_cast<double>(moment) == seconds_of(date) - 25569.0 * 86400, "of its own second");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool is_utc = ::setenv("TZ", "UTC0", 1) == 0;
  fuzz::require(is_utc, "the time zone is set");
  const double date = fuzz::double_from(data, size);
  check_written(date);
  // The same spread over the days that there are.
  const double within = std::isfinite(date) ? std::fmod(date, kBeyond) : 0;
  if (within > kFirst) check_written(within);
  if (size >= 7) check_named(data);
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  check_http(bytes, date);
  check_http(bytes, within);
  check_read(zelto::to_wide(bytes));
  return 0;
}
