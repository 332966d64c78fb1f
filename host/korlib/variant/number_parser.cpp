#include "variant/number_parser.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "base/ascii.h"

namespace korlib::variants {

namespace {

// Beyond any double whatever the digits are; a limit, so that sums of exponents stay small.
constexpr int kExponentLimit = 1'000'000'000;

constexpr wchar_t kAnyCurrency = 0xA4;

// digits × 10^exponent.
struct Decimal {
  bool is_negative = false;
  bool is_whole = true;  // neither point nor exponent
  std::string digits;    // without leading zeros; empty is zero
  int exponent = 0;
};

class NumberReader {
 public:
  explicit NumberReader(std::wstring_view text) : rest_(trimmed(text)) {}

  HRESULT read(Decimal* number) {
    read_marks();
    if (!has_currency_ && !is_open_) {
      if (take_prefix(L'H')) return read_radix(4, number);
      if (take_prefix(L'O')) return read_radix(3, number);
    }
    RETURN_IF_FAILED(read_decimal(number));
    const bool is_closed = is_open_ ? take(L')') : has_sign_ || rest_.empty() || take_sign();
    number->is_negative = is_negative_ || is_open_;
    return is_closed && rest_.empty() ? S_OK : DISP_E_TYPEMISMATCH;
  }

 private:
  bool take(wchar_t wanted) {
    if (rest_.empty() || rest_[0] != wanted) return false;
    rest_.remove_prefix(1);
    return true;
  }

  bool take_sign() {
    is_negative_ = take(L'-');
    return is_negative_ || take(L'+');
  }

  // What stands in front of the digits, in any order: a sign or a parenthesis, and a currency sign.
  void read_marks() {
    for (bool is_taken = true; is_taken;) {
      is_taken = false;
      if (!has_currency_) is_taken = has_currency_ = take(L'$') || take(kAnyCurrency);
      if (is_taken || has_sign_ || is_open_) continue;
      is_open_ = take(L'(');
      has_sign_ = !is_open_ && take_sign();
      is_taken = is_open_ || has_sign_;
    }
  }

  bool take_prefix(wchar_t letter) {
    if (rest_.size() < 2 || rest_[0] != L'&' || base::ascii_upper(rest_[1]) != letter) return false;
    rest_.remove_prefix(2);
    return true;
  }

  std::size_t take_digits(Decimal* number) {
    const std::size_t before = rest_.size();
    while (!rest_.empty() && base::is_digit(rest_[0])) {
      if (!number->digits.empty() || rest_[0] != L'0') number->digits += static_cast<char>(rest_[0]);
      rest_.remove_prefix(1);
    }
    return before - rest_.size();
  }

  // False when a group is not of three digits, or the first one of more.
  bool take_groups(std::size_t in_first, Decimal* number) {
    if (rest_.empty() || rest_[0] != L',') return true;
    bool is_right = in_first >= 1 && in_first <= 3;
    while (is_right && take(L',')) is_right = take_digits(number) == 3;
    return is_right;
  }

  HRESULT read_decimal(Decimal* number) {
    std::size_t count = take_digits(number);
    if (!take_groups(count, number)) return DISP_E_TYPEMISMATCH;
    if (take(L'.')) {
      number->is_whole = false;
      const std::size_t decimals = take_digits(number);
      number->exponent = -static_cast<int>(std::min<std::size_t>(decimals, kExponentLimit));
      count += decimals;
    }
    if (count == 0) return DISP_E_TYPEMISMATCH;
    return take(L'e') || take(L'E') ? read_exponent(number) : S_OK;
  }

  HRESULT read_exponent(Decimal* number) {
    number->is_whole = false;
    const bool is_negative = take(L'-');
    if (!is_negative) take(L'+');
    if (rest_.empty() || !base::is_digit(rest_[0])) return DISP_E_TYPEMISMATCH;
    int exponent = 0;
    for (; !rest_.empty() && base::is_digit(rest_[0]); rest_.remove_prefix(1)) {
      exponent = std::min(exponent, kExponentLimit / 10 - 1) * 10 + static_cast<int>(rest_[0] - L'0');
    }
    number->exponent += is_negative ? -exponent : exponent;
    return S_OK;
  }

  HRESULT read_radix(unsigned bits, Decimal* number) {
    if (rest_.empty()) return DISP_E_TYPEMISMATCH;
    std::uint64_t value = 0;
    for (; !rest_.empty(); rest_.remove_prefix(1)) {
      const int digit = base::hex_value(rest_[0]);
      if (digit < 0 || digit >> bits) return DISP_E_TYPEMISMATCH;
      if (value >> (64 - bits)) return DISP_E_OVERFLOW;
      value = value << bits | static_cast<std::uint64_t>(digit);
    }
    if (value) number->digits = std::to_string(value);
    number->is_negative = is_negative_;
    return S_OK;
  }

  std::wstring_view rest_;
  bool has_currency_ = false;
  bool has_sign_ = false;
  bool is_open_ = false;
  bool is_negative_ = false;
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

HRESULT parse_number(std::wstring_view text, Scalar* number) {
  constexpr std::size_t kDigitsOf64Bits = 20;
  Decimal decimal;
  RETURN_IF_FAILED(NumberReader(text).read(&decimal));
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

HRESULT parse_currency(std::wstring_view text, long double* ten_thousandths) {
  constexpr int kDecimals = 4;
  Decimal decimal;
  RETURN_IF_FAILED(NumberReader(text).read(&decimal));
  return real_of(decimal, kDecimals, ten_thousandths);
}

HRESULT plain_number(std::wstring_view text, std::wstring* plain) {
  Decimal decimal;
  RETURN_IF_FAILED(NumberReader(text).read(&decimal));
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

// Unicode's narrow one stands between a time and its AM or PM.
bool is_blank(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r') || c == 0xA0 || c == 0x202F || c == 0x3000; }

std::wstring_view trimmed(std::wstring_view text) { return base::trimmed(text, is_blank); }

}  // namespace korlib::variants
