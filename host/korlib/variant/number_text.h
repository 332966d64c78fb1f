// Numbers as text, without regard to any locale.
#pragma once

#include <string>
#include <string_view>

#include <korlib/hresult.h>

#include "variant/scalar.h"

namespace korlib::variants {

// The shortest text that reads back as the same number, laid out as page scripts print numbers, with a
// capital E: 0.1, 100000000000000000000, 1E+21, 1E-7. NaN, Infinity and -Infinity are words for who reads a
// page; they are not read back.
std::string real_text(double value);
std::string single_text(float value);
std::string integer_text(Wide value);
std::string currency_text(LONGLONG ten_thousandths);  // no more decimals than needed

// A number in text, as automation writes it where no locale is named. There the point separates decimals
// and the comma groups digits.
//
//   number    blanks marks digits [marks] blanks
//   marks     in front, in any order and each once: a currency sign, $ or ¤, and a sign or "(".
//             Behind: the ")" of that "(", or a sign when none stands in front.
//             Parentheses make the number negative, as bookkeeping has it. No blanks between the marks.
//   digits    decimal ones with an optional point and exponent. Commas part all of those in front of the
//             point in groups of three, or none.
//             Or &H and hexadecimal ones, &O and octal ones, with no mark but a sign in front.
//
// 1234.5  1,234.5  $1,234.50  -$5  $-5  ($5)  (12)  12-  1.5e-3  &HFF
//
// Other readers of such text pass over a comma anywhere. That makes 15 of "1,5", which half the world writes
// for one and a half, without a word; here it is not a number. Nor are "NaN" and "Infinity", which a form or a
// query could otherwise put into every sum.
//
// Whole numbers give integer, others real. DISP_E_TYPEMISMATCH for anything else, DISP_E_OVERFLOW beyond
// the range of a double or of 64 bits.
HRESULT parse_number(std::wstring_view text, Scalar* number);

// As parse_number, but exact to the ten-thousandth; what lies behind it is rounded half to even.
HRESULT parse_currency(std::wstring_view text, Wide* ten_thousandths);

// The number in text for a reader that knows digits, a minus sign, a point and an exponent only. No digit
// that counts is lost.
HRESULT plain_number(std::wstring_view text, std::wstring* plain);

}  // namespace korlib::variants
