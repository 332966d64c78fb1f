#include "vbscript/number_literal.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "base/ascii.h"

namespace zelto::vbscript {
namespace {

constexpr std::int64_t kMostInteger = 32767;

NumberKind kind_of(double value) {
  if (value <= kMostInteger) return NumberKind::integer;
  return value <= std::numeric_limits<std::int32_t>::max() ? NumberKind::long_ : NumberKind::double_;
}

// The digits are those of the number's two's complement: four hexadecimal ones are an Integer's.
NumberLiteral read_radix(std::wstring_view text) {
  std::size_t at = 1;
  unsigned bits = 3;
  if (base::ascii_lower(text[at]) == L'h') {
    bits = 4;
    ++at;
  } else if (base::ascii_lower(text[at]) == L'o') {
    ++at;
  }
  std::uint64_t value = 0;
  for (; at < text.size(); ++at) {
    const int digit = base::hex_value(text[at]);
    if (digit < 0 || digit >= 1 << bits) break;
    value = (value << bits) | static_cast<unsigned>(digit);
    if (value > std::numeric_limits<std::uint32_t>::max()) return {};
  }
  const bool is_long = at < text.size() && text[at] == L'&';
  if (is_long) ++at;
  if (!is_long && value <= std::numeric_limits<std::uint16_t>::max()) {
    return {at, static_cast<double>(static_cast<std::int16_t>(value)), NumberKind::integer};
  }
  return {at, static_cast<double>(static_cast<std::int32_t>(value)), NumberKind::long_};
}

}  // namespace

NumberLiteral read_number_literal(std::wstring_view text) {
  if (text.front() == L'&') return read_radix(text);
  std::string digits;
  std::size_t at = 0;
  bool is_double = false;
  const auto take_digits = [&] {
    while (at < text.size() && base::is_digit(text[at])) digits += static_cast<char>(text[at++]);
  };
  take_digits();
  if (at < text.size() && text[at] == L'.') {
    is_double = true;
    digits += static_cast<char>(text[at++]);
    take_digits();
  }
  if (at < text.size() && base::ascii_lower(text[at]) == L'e') {
    std::size_t exponent = at + 1;
    if (exponent < text.size() && (text[exponent] == L'+' || text[exponent] == L'-')) ++exponent;
    if (exponent < text.size() && base::is_digit(text[exponent])) {
      is_double = true;
      digits += 'e';
      if (text[exponent - 1] == L'-') digits += '-';
      at = exponent;
      take_digits();
    }
  }
  double value = 0;
  const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  // What is too small for a double is none.
  if (failure == std::errc::result_out_of_range && digits.find("e-") == digits.npos) return {};
  return {at, value, is_double ? NumberKind::double_ : kind_of(value)};
}

}  // namespace zelto::vbscript
