// Numbers as text, without regard to any locale.
#pragma once

#include <string>

#include "variant/scalar.h"

namespace korlib::variants {

// The shortest text that reads back as the same number, laid out as page scripts print numbers, with a
// capital E: 0.1, 100000000000000000000, 1E+21, 1E-7. NaN, Infinity and -Infinity are words for who reads a
// page; they are not read back.
std::string real_text(double value);
std::string single_text(float value);
std::string integer_text(Wide value);
std::string currency_text(LONGLONG ten_thousandths);  // no more decimals than needed

}  // namespace korlib::variants
