// Dates as text, in the order of year, month and day that can be misread nowhere.
#pragma once

#include <string>

#include <korlib/hresult.h>
#include <korlib/types.h>

namespace korlib::variants {

// "2026-11-21 10:00:00", to the nearest second; "2026-11-21" at midnight; "10:00:00" on day zero, which
// stands for a time without a date. DISP_E_OVERFLOW for what is not a date.
HRESULT date_text(DATE date, std::string* text);

}  // namespace korlib::variants
