#include "variant/scalar_text.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "base/serial_date.h"

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

std::string integer_text(Wide value) {
  if (value < 0) return "-" + std::to_string(static_cast<std::uint64_t>(-value));
  return std::to_string(static_cast<std::uint64_t>(value));
}

std::string currency_text(Wide ten_thousandths) {
  constexpr int kDecimals = 4;
  std::string digits = integer_text(ten_thousandths < 0 ? -ten_thousandths : ten_thousandths);
  const int point = static_cast<int>(digits.size()) - kDecimals;
  digits.erase(digits.find_last_not_of('0') + 1);
  if (digits.empty()) return "0";
  return (ten_thousandths < 0 ? "-" : "") + lay_out(digits, point);
}

HRESULT date_text(DATE date, std::string* text) {
  if (!base::is_date(date)) return DISP_E_OVERFLOW;
  const auto [day, seconds] = base::nearest_second(date);
  if (static_cast<DATE>(day) >= base::kDayBeyond) return DISP_E_OVERFLOW;

  char buffer[64];
  text->clear();
  if (day != 0) {
    const std::chrono::year_month_day ymd = base::calendar_day(day);
    std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02u", static_cast<int>(ymd.year()),
                  static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()));
    *text = buffer;
    if (seconds == 0) return S_OK;
    *text += ' ';
  }
  std::snprintf(buffer, sizeof buffer, "%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
  *text += buffer;
  return S_OK;
}

}  // namespace

HRESULT scalar_text(const Scalar& value, std::string* text) {
  switch (value.form) {
    case Form::integer:
      *text = integer_text(value.integer);
      break;
    case Form::boolean:
      *text = value.integer ? "True" : "False";
      break;
    case Form::currency:
      *text = currency_text(value.integer);
      break;
    case Form::real:
      *text = shortest_text(value.real);
      break;
    case Form::single:
      *text = shortest_text(static_cast<float>(value.real));
      break;
    case Form::date:
      return date_text(value.real, text);
    case Form::empty:
    case Form::text:
      text->clear();
  }
  return S_OK;
}

}  // namespace korlib::variants
