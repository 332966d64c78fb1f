// Reads numbers in text, without regard to any locale.
#pragma once

#include <string>
#include <string_view>

#include <korlib/hresult.h>

#include "variant/scalar.h"

namespace korlib::variants {

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

// As parse_number, but in ten-thousandths, and with all the digits that an amount can have; it is for the caller to
// round it.
HRESULT parse_currency(std::wstring_view text, long double* ten_thousandths);

// The number in text for a reader that knows digits, a minus sign, a point and an exponent only. No digit
// that counts is lost.
HRESULT plain_number(std::wstring_view text, std::wstring* plain);

bool is_blank(wchar_t c);

// Without the blanks, tabs and line ends around it.
std::wstring_view trimmed(std::wstring_view text);

}  // namespace korlib::variants
