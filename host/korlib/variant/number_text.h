// Numbers as text, without regard to any locale.
#pragma once

#include <string>

#include <korlib/hresult.h>

#include "variant/scalar.h"

namespace korlib::variants {

// The shortest text that reads back as the same number, laid out as page scripts print numbers, with a
// capital E: 0.1, 100000000000000000000, 1E+21, 1E-7, NaN, Infinity.
std::string real_text(double value);
std::string single_text(float value);
std::string integer_text(Wide value);
std::string currency_text(LONGLONG ten_thousandths);  // no more decimals than needed

// A number in text: blanks around it, a sign, decimal digits with an optional point and exponent, or
// hexadecimal digits after &H and octal ones after &O. Whole numbers give kInteger, others kReal.
// DISP_E_TYPEMISMATCH for anything else, DISP_E_OVERFLOW beyond the range of a double or of 64 bits.
HRESULT parse_number(std::wstring_view text, Scalar* number);

// As parse_number, but exact to the ten-thousandth; what lies behind it is rounded half to even.
HRESULT parse_currency(std::wstring_view text, Wide* ten_thousandths);

// Without the blanks, tabs and line ends around it.
std::wstring_view trimmed(std::wstring_view text);

}  // namespace korlib::variants
