// A plain value as text, without regard to any locale.
#pragma once

#include <string>

#include <korlib/hresult.h>

#include "variant/scalar.h"

namespace korlib::variants {

// In ASCII; nothing for a value that is empty. The value is not text already.
//
// Real numbers: the shortest text that reads back as the same number, laid out as page scripts print numbers,
// with a capital E: 0.1, 100000000000000000000, 1E+21, 1E-7. NaN, Infinity and -Infinity are words for who
// reads a page; they are not read back. Currency: no more decimals than needed. Booleans: "True" and "False".
//
// Dates: in the order of year, month and day that can be misread nowhere. "2026-11-21 10:00:00", to the
// nearest second; "2026-11-21" at midnight; "10:00:00" on day zero, which stands for a time without a date.
// DISP_E_OVERFLOW for what is not a date.
HRESULT scalar_text(const Scalar& value, std::string* text);

}  // namespace korlib::variants
