// Decimal text taken apart.
#pragma once

#include <string>
#include <string_view>

#include <korlib/hresult.h>

namespace korlib::variants {

// digits × 10^exponent.
struct Decimal {
  bool is_negative = false;
  bool is_whole = true;  // neither point nor exponent
  std::string digits;    // without leading zeros; empty is zero
  int exponent = 0;
};

// Reads text of the form that number_text.h tells. DISP_E_TYPEMISMATCH for anything else, DISP_E_OVERFLOW
// for more than 64 bits of hexadecimal or octal digits.
HRESULT parse_decimal(std::wstring_view text, Decimal* number);

bool is_digit(wchar_t c);
bool is_blank(wchar_t c);

// Without the blanks, tabs and line ends around it.
std::wstring_view trimmed(std::wstring_view text);

}  // namespace korlib::variants
