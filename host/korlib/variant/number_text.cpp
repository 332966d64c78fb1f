#include "variant/number_text.h"

#include <array>
#include <charconv>
#include <cmath>

#include "variant/decimal.h"

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

// The power of ten of the first digit, plus one.
int magnitude_of(const Decimal& number) { return static_cast<int>(number.digits.size()) + number.exponent; }

// The value times ten to the power of `shift`, correctly rounded. Too small is zero.
template <class Real>
HRESULT real_of(const Decimal& number, int shift, Real* value) {
  *value = 0;
  if (number.digits.empty()) return S_OK;
  const std::string text = number.digits + "e" + std::to_string(number.exponent + shift);
  const auto read = std::from_chars(text.data(), text.data() + text.size(), *value);
  if (read.ec == std::errc::result_out_of_range) {
    *value = 0;
    if (magnitude_of(number) + shift > 0) return DISP_E_OVERFLOW;
  }
  if (number.is_negative) *value = -*value;
  return S_OK;
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

HRESULT parse_number(std::wstring_view text, Scalar* number) {
  constexpr std::size_t kDigitsOf64Bits = 20;
  Decimal decimal;
  RETURN_IF_FAILED(parse_decimal(text, &decimal));
  if (decimal.is_whole && decimal.digits.size() <= kDigitsOf64Bits) {
    Wide value = 0;
    for (const char digit : decimal.digits) value = value * 10 + (digit - '0');
    number->form = Form::integer;
    number->integer = decimal.is_negative ? -value : value;
    return S_OK;
  }
  number->form = Form::real;
  return real_of(decimal, 0, &number->real);
}

HRESULT parse_currency(std::wstring_view text, Wide* ten_thousandths) {
  constexpr int kDecimals = 4;
  constexpr long double kBeyond64Bits = 18446744073709551616.0L;
  Decimal decimal;
  RETURN_IF_FAILED(parse_decimal(text, &decimal));
  long double value = 0;
  RETURN_IF_FAILED(real_of(decimal, kDecimals, &value));
  if (std::abs(value) >= kBeyond64Bits) return DISP_E_OVERFLOW;
  *ten_thousandths = static_cast<Wide>(std::nearbyint(value));
  return S_OK;
}

HRESULT plain_number(std::wstring_view text, std::wstring* plain) {
  Decimal decimal;
  RETURN_IF_FAILED(parse_decimal(text, &decimal));
  std::string digits = decimal.digits.empty() ? "0" : decimal.digits;
  const int count = static_cast<int>(digits.size());
  const int decimals = -decimal.exponent;
  // A long way from the digits to the point is told by an exponent, however it was told in the text.
  constexpr int kMostZeros = 64;
  if (decimal.exponent > 0 || decimals > count + kMostZeros) {
    digits += "e" + std::to_string(decimal.exponent);
  } else if (decimals > 0) {
    if (decimals >= count) digits.insert(0, static_cast<std::size_t>(decimals - count) + 1, '0');
    digits.insert(digits.size() - static_cast<std::size_t>(decimals), 1, '.');
  }
  if (decimal.is_negative && !decimal.digits.empty()) digits.insert(0, 1, '-');
  plain->assign(digits.begin(), digits.end());
  return S_OK;
}

}  // namespace korlib::variants
