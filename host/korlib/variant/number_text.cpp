#include "variant/number_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace korlib::variants {

namespace {

// The places of the decimal point at which scripts change to an exponent.
constexpr int kMostWholeDigits = 21;
constexpr int kMostLeadingZeros = 6;

// `digits` times ten to the power of (point - number of digits), without an exponent where scripts
// print none.
std::string lay_out(std::string_view digits, int point) {
  const int count = static_cast<int>(digits.size());
  std::string text(digits);
  if (point > 0 && point <= kMostWholeDigits) {
    if (count <= point) return text.append(static_cast<std::size_t>(point - count), '0');
    return text.insert(static_cast<std::size_t>(point), 1, '.');
  }
  if (point <= 0 && point > -kMostLeadingZeros) {
    return "0." + std::string(static_cast<std::size_t>(-point), '0') + text;
  }
  if (count > 1) text.insert(1, 1, '.');
  const int exponent = point - 1;
  return text + (exponent < 0 ? "E-" : "E+") + std::to_string(std::abs(exponent));
}

template <class Real>
std::string shortest_text(Real value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";
  if (value == 0) return "0";

  // "d.ddde±xx": the digits without the point, then the exponent.
  std::array<char, 64> buffer;
  const auto written =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::abs(value), std::chars_format::scientific);
  const std::string_view scientific(buffer.data(), static_cast<std::size_t>(written.ptr - buffer.data()));
  const std::size_t e = scientific.find('e');
  std::string digits(scientific.substr(0, e));
  std::erase(digits, '.');
  int exponent = 0;
  const std::size_t sign = e + 1;
  const std::size_t first = scientific[sign] == '+' ? sign + 1 : sign;
  std::from_chars(scientific.data() + first, written.ptr, exponent);
  return (value < 0 ? "-" : "") + lay_out(digits, exponent + 1);
}

}  // namespace

std::string real_text(double value) { return shortest_text(value); }
std::string single_text(float value) { return shortest_text(value); }

std::string integer_text(Wide value) {
  if (value < 0) return "-" + std::to_string(static_cast<std::uint64_t>(-value));
  return std::to_string(static_cast<std::uint64_t>(value));
}

std::string currency_text(LONGLONG ten_thousandths) {
  const bool is_negative = ten_thousandths < 0;
  const Wide magnitude = is_negative ? -Wide{ten_thousandths} : Wide{ten_thousandths};
  std::string text = integer_text(magnitude / kCurrencyUnit);
  if (const Wide fraction = magnitude % kCurrencyUnit) {
    std::string decimals = integer_text(kCurrencyUnit + fraction).substr(1);
    decimals.erase(decimals.find_last_not_of('0') + 1);
    text += "." + decimals;
  }
  return (is_negative ? "-" : "") + text;
}

}  // namespace korlib::variants
