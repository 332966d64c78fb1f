// Dates as text: the order of year, month and day that can be misread nowhere.
#pragma once

#include <string>
#include <string_view>

#include <korlib/hresult.h>
#include <korlib/types.h>

namespace korlib::variants {

// Whether the date lies in the years 100 to 9999, which is what a DATE can express.
bool is_date(DATE date);

// "2026-11-21 10:00:00", to the nearest second; "2026-11-21" at midnight; "10:00:00" on day zero, which
// stands for a time without a date. DISP_E_OVERFLOW for what is no date.
HRESULT date_text(DATE date, std::string* text);

// Reads what date_text writes, and also '/' between the numbers of the date, 'T' before the time, hours
// and minutes alone, and fractions of a second. DISP_E_TYPEMISMATCH for anything else: a date that does
// not begin with a four-digit year would be a guess.
HRESULT parse_date(std::wstring_view text, DATE* date);

}  // namespace korlib::variants
