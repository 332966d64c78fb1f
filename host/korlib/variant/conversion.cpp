#include "variant/conversion.h"

#include <cmath>
#include <limits>
#include <string>

#include <korlib/bstr.h>

#include "base/letter_case.h"
#include "base/serial_date.h"
#include "variant/date_parser.h"
#include "variant/date_text.h"
#include "variant/decimal.h"
#include "variant/number_text.h"

namespace korlib::variants {

namespace {

constexpr double kBeyond64Bits = 18446744073709551616.0;

HRESULT rounded(long double value, Wide* integer) {
  // NaN fails the comparison as well.
  if (!(std::abs(value) < kBeyond64Bits)) return DISP_E_OVERFLOW;
  *integer = static_cast<Wide>(std::nearbyint(value));
  return S_OK;
}

Wide divided_half_to_even(Wide value, Wide divisor) {
  const Wide quotient = value / divisor;
  const Wide remainder = value % divisor;
  const Wide twice = 2 * (remainder < 0 ? -remainder : remainder);
  const bool rounds_away = twice > divisor || (twice == divisor && quotient % 2 != 0);
  if (!rounds_away) return quotient;
  return value < 0 ? quotient - 1 : quotient + 1;
}

HRESULT plain_text(const Scalar& value, std::string* text) {
  switch (value.form) {
    case Form::integer:
      *text = integer_text(value.integer);
      return S_OK;
    case Form::boolean:
      *text = value.integer ? "True" : "False";
      return S_OK;
    case Form::currency:
      *text = currency_text(static_cast<LONGLONG>(value.integer));
      return S_OK;
    case Form::real:
      *text = real_text(value.real);
      return S_OK;
    case Form::single:
      *text = single_text(static_cast<float>(value.real));
      return S_OK;
    case Form::date:
      return date_text(value.real, text);
    case Form::empty:
    case Form::text:
      break;
  }
  text->clear();
  return S_OK;
}

}  // namespace

HRESULT to_integer(const Scalar& value, Wide* integer) {
  *integer = 0;
  switch (value.form) {
    case Form::empty:
      return S_OK;
    case Form::integer:
    case Form::boolean:
      *integer = value.integer;
      return S_OK;
    case Form::currency:
      *integer = divided_half_to_even(value.integer, kCurrencyUnit);
      return S_OK;
    case Form::real:
    case Form::single:
    case Form::date:
      return rounded(value.real, integer);
    case Form::text:
      break;
  }
  Scalar number;
  RETURN_IF_FAILED(parse_number(value.text, &number));
  return to_integer(number, integer);
}

HRESULT to_real(const Scalar& value, double* real) {
  *real = 0;
  switch (value.form) {
    case Form::empty:
      return S_OK;
    case Form::integer:
    case Form::boolean:
      *real = static_cast<double>(value.integer);
      return S_OK;
    case Form::currency:
      *real = static_cast<double>(value.integer) / kCurrencyUnit;
      return S_OK;
    case Form::real:
    case Form::single:
    case Form::date:
      *real = value.real;
      return S_OK;
    case Form::text:
      break;
  }
  Scalar number;
  RETURN_IF_FAILED(parse_number(value.text, &number));
  return to_real(number, real);
}

HRESULT to_currency(const Scalar& value, LONGLONG* ten_thousandths) {
  *ten_thousandths = 0;
  Wide units = 0;
  switch (value.form) {
    case Form::currency:
      units = value.integer;
      break;
    case Form::real:
    case Form::single:
    case Form::date:
      RETURN_IF_FAILED(rounded(static_cast<long double>(value.real) * kCurrencyUnit, &units));
      break;
    case Form::text:
      RETURN_IF_FAILED(parse_currency(value.text, &units));
      break;
    case Form::empty:
    case Form::integer:
    case Form::boolean:
      units = value.integer * kCurrencyUnit;
      break;
  }
  using Limits = std::numeric_limits<LONGLONG>;
  if (units < Limits::min() || units > Limits::max()) return DISP_E_OVERFLOW;
  *ten_thousandths = static_cast<LONGLONG>(units);
  return S_OK;
}

HRESULT to_date(const Scalar& value, DATE* date) {
  if (value.form == Form::text) return parse_date(value.text, date);
  RETURN_IF_FAILED(to_real(value, date));
  if (base::is_date(*date)) return S_OK;
  *date = 0;
  return DISP_E_OVERFLOW;
}

HRESULT to_boolean(const Scalar& value, bool* boolean) {
  *boolean = false;
  if (value.form == Form::text) {
    const std::wstring_view word = trimmed(value.text);
    *boolean = base::equal_ascii(word, L"true") || word == L"#TRUE#";
    if (*boolean || base::equal_ascii(word, L"false") || word == L"#FALSE#") return S_OK;
  }
  double real = 0;
  RETURN_IF_FAILED(to_real(value, &real));
  *boolean = real != 0;
  return S_OK;
}

HRESULT to_text(const Scalar& value, BSTR* text) {
  *text = nullptr;
  std::wstring wide;
  if (value.form == Form::text) {
    wide = value.text;
  } else {
    std::string plain;
    RETURN_IF_FAILED(plain_text(value, &plain));
    wide.assign(plain.begin(), plain.end());
  }
  *text = SysAllocStringLen(wide.c_str(), static_cast<UINT>(wide.size()));
  return *text ? S_OK : E_OUTOFMEMORY;
}

}  // namespace korlib::variants
