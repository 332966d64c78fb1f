#include "variant/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

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

bool is_blank(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r') || c == 0xA0 || c == 0x3000; }

bool is_digit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// Decimal text taken apart: digits × 10^exponent.
struct Decimal {
  bool is_negative = false;
  bool is_whole = true;  // neither point nor exponent
  std::string digits;    // without leading zeros; empty is zero
  int exponent = 0;
};

// Beyond any double whatever the digits are; a limit, so that sums of exponents stay small.
constexpr int kExponentLimit = 1'000'000'000;

class NumberReader {
 public:
  explicit NumberReader(std::wstring_view text) : rest_(trimmed(text)) {}

  HRESULT read(Decimal* number) {
    number->is_negative = take_sign();
    if (take_prefix(L'H')) return read_radix(4, number);
    if (take_prefix(L'O')) return read_radix(3, number);
    return read_decimal(number);
  }

 private:
  bool take_sign() {
    const bool is_signed = !rest_.empty() && (rest_[0] == L'-' || rest_[0] == L'+');
    const bool is_negative = is_signed && rest_[0] == L'-';
    if (is_signed) rest_.remove_prefix(1);
    return is_negative;
  }

  bool take_prefix(wchar_t letter) {
    if (rest_.size() < 2 || rest_[0] != L'&' || (rest_[1] & ~0x20) != letter) return false;
    rest_.remove_prefix(2);
    return true;
  }

  bool take_digits(Decimal* number) {
    const bool any = !rest_.empty() && is_digit(rest_[0]);
    while (!rest_.empty() && is_digit(rest_[0])) {
      if (!number->digits.empty() || rest_[0] != L'0') number->digits += static_cast<char>(rest_[0]);
      rest_.remove_prefix(1);
    }
    return any;
  }

  HRESULT read_decimal(Decimal* number) {
    bool any = take_digits(number);
    if (!rest_.empty() && rest_[0] == L'.') {
      rest_.remove_prefix(1);
      number->is_whole = false;
      const std::size_t before = rest_.size();
      any = take_digits(number) || any;
      number->exponent = -static_cast<int>(std::min<std::size_t>(before - rest_.size(), kExponentLimit));
    }
    if (!any) return DISP_E_TYPEMISMATCH;
    if (!rest_.empty() && (rest_[0] | 0x20) == L'e') RETURN_IF_FAILED(read_exponent(number));
    return rest_.empty() ? S_OK : DISP_E_TYPEMISMATCH;
  }

  HRESULT read_exponent(Decimal* number) {
    rest_.remove_prefix(1);
    number->is_whole = false;
    const bool is_negative = take_sign();
    if (rest_.empty()) return DISP_E_TYPEMISMATCH;
    int exponent = 0;
    for (; !rest_.empty() && is_digit(rest_[0]); rest_.remove_prefix(1)) {
      exponent = std::min(exponent, kExponentLimit / 10 - 1) * 10 + static_cast<int>(rest_[0] - L'0');
    }
    number->exponent += is_negative ? -exponent : exponent;
    return S_OK;
  }

  HRESULT read_radix(unsigned bits, Decimal* number) {
    if (rest_.empty()) return DISP_E_TYPEMISMATCH;
    std::uint64_t value = 0;
    for (; !rest_.empty(); rest_.remove_prefix(1)) {
      const wchar_t c = is_digit(rest_[0]) ? rest_[0] : static_cast<wchar_t>(rest_[0] | 0x20);
      const bool is_letter = c >= L'a' && c <= L'f';
      const auto digit = static_cast<std::uint64_t>(is_letter ? c - L'a' + 10 : c - L'0');
      if ((!is_letter && !is_digit(c)) || digit >> bits) return DISP_E_TYPEMISMATCH;
      if (value >> (64 - bits)) return DISP_E_OVERFLOW;
      value = value << bits | digit;
    }
    if (value) number->digits = std::to_string(value);
    return S_OK;
  }

  std::wstring_view rest_;
};

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
  RETURN_IF_FAILED(NumberReader(text).read(&decimal));
  if (decimal.is_whole && decimal.digits.size() <= kDigitsOf64Bits) {
    Wide value = 0;
    for (const char digit : decimal.digits) value = value * 10 + (digit - '0');
    number->form = Form::kInteger;
    number->integer = decimal.is_negative ? -value : value;
    return S_OK;
  }
  number->form = Form::kReal;
  return real_of(decimal, 0, &number->real);
}

HRESULT parse_currency(std::wstring_view text, Wide* ten_thousandths) {
  constexpr int kDecimals = 4;
  constexpr long double kBeyond64Bits = 18446744073709551616.0L;
  Decimal decimal;
  RETURN_IF_FAILED(NumberReader(text).read(&decimal));
  long double value = 0;
  RETURN_IF_FAILED(real_of(decimal, kDecimals, &value));
  if (std::abs(value) >= kBeyond64Bits) return DISP_E_OVERFLOW;
  *ten_thousandths = static_cast<Wide>(std::nearbyint(value));
  return S_OK;
}

std::wstring_view trimmed(std::wstring_view text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace korlib::variants
