#include "variant/conversion.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>

#include <korlib/combstr.h>

#include "base/letter_case.h"
#include "base/serial_date.h"
#include "variant/date_parser.h"
#include "variant/number_parser.h"
#include "variant/scalar_text.h"

namespace korlib::variants {

namespace {

// Halves are rounded to the even neighbour.
HRESULT rounded(long double value, Wide* integer) {
  constexpr long double kBeyond64Bits = 18446744073709551616.0L;
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

// Halves are rounded to the even neighbour. Beyond what a Wide can safely hold is DISP_E_OVERFLOW; the
// caller checks the range of its own type.
HRESULT to_integer(const Scalar& value, Wide* integer) {
  if (value.is_text()) {
    Scalar number;
    RETURN_IF_FAILED(parse_number(value.text, &number));
    return to_integer(number, integer);
  }
  if (value.is_real()) return rounded(value.real, integer);
  *integer = value.form == Form::currency ? divided_half_to_even(value.integer, kCurrencyUnit) : value.integer;
  return S_OK;
}

HRESULT to_real(const Scalar& value, double* real) {
  if (value.is_text()) {
    Scalar number;
    RETURN_IF_FAILED(parse_number(value.text, &number));
    return to_real(number, real);
  }
  *real = value.number<double>();
  return S_OK;
}

Scalar load_empty(const VARIANT&) { return {}; }

template <auto Member>
Scalar load_integer(const VARIANT& v) {
  return {.form = Form::integer, .integer = v.*Member};
}

template <auto Member, Form form>
Scalar load_real(const VARIANT& v) {
  return {.form = form, .real = v.*Member};
}

Scalar load_boolean(const VARIANT& v) { return {.form = Form::boolean, .integer = v.boolVal ? -1 : 0}; }
Scalar load_currency(const VARIANT& v) { return {.form = Form::currency, .integer = v.cyVal.int64}; }
Scalar load_text(const VARIANT& v) { return {.form = Form::text, .text = view_of(v.bstrVal)}; }

template <class Integer>
bool fits(Wide integer) {
  using Limits = std::numeric_limits<Integer>;
  return integer >= Limits::min() && integer <= Limits::max();
}

// True has all bits set in every integer type, the unsigned ones included.
template <auto Member>
HRESULT store_integer(const Scalar& value, VARIANT* v) {
  using Integer = std::remove_reference_t<decltype(v->*Member)>;
  Wide integer = 0;
  RETURN_IF_FAILED(to_integer(value, &integer));
  if (!fits<Integer>(integer) && value.form != Form::boolean) return DISP_E_OVERFLOW;
  v->*Member = static_cast<Integer>(integer);
  return S_OK;
}

HRESULT store_single(const Scalar& value, VARIANT* v) {
  double real = 0;
  RETURN_IF_FAILED(to_real(value, &real));
  const auto single = static_cast<float>(real);
  if (std::isinf(single) && !std::isinf(real)) return DISP_E_OVERFLOW;
  v->fltVal = single;
  return S_OK;
}

HRESULT store_real(const Scalar& value, VARIANT* v) { return to_real(value, &v->dblVal); }

HRESULT store_currency(const Scalar& value, VARIANT* v) {
  Wide ten_thousandths = value.form == Form::currency ? value.integer : value.integer * kCurrencyUnit;
  if (value.is_text() || value.is_real()) {
    long double exact = static_cast<long double>(value.real) * kCurrencyUnit;
    if (value.is_text()) RETURN_IF_FAILED(parse_currency(value.text, &exact));
    RETURN_IF_FAILED(rounded(exact, &ten_thousandths));
  }
  if (!fits<LONGLONG>(ten_thousandths)) return DISP_E_OVERFLOW;
  v->cyVal.int64 = static_cast<LONGLONG>(ten_thousandths);
  return S_OK;
}

HRESULT store_date(const Scalar& value, VARIANT* v) {
  if (value.is_text()) return parse_date(value.text, &v->date);
  RETURN_IF_FAILED(to_real(value, &v->date));
  return base::is_date(v->date) ? S_OK : DISP_E_OVERFLOW;
}

// Text is "True" or "False" in any case, "#TRUE#" or "#FALSE#" as files of data have them, or a number. A
// number is true unless it is 0, NaN included.
HRESULT store_boolean(const Scalar& value, VARIANT* v) {
  const std::wstring_view word = trimmed(value.text);
  const bool is_true = base::equal_ascii(word, L"true") || word == L"#TRUE#";
  const bool is_false = base::equal_ascii(word, L"false") || word == L"#FALSE#";
  double real = is_true ? 1 : 0;
  if (!is_true && !is_false) RETURN_IF_FAILED(to_real(value, &real));
  v->boolVal = real != 0 ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

HRESULT store_text(const Scalar& value, VARIANT* v) {
  std::string text;
  RETURN_IF_FAILED(scalar_text(value, &text));
  v->bstrVal = SysAllocStringLen(nullptr, static_cast<UINT>(text.size()));
  if (!v->bstrVal) return E_OUTOFMEMORY;
  std::ranges::copy(text, v->bstrVal);  // all ASCII
  return S_OK;
}

template <auto Member>
constexpr TypeRow integer_row() {
  return {load_integer<Member>, store_integer<Member>, sizeof(VARIANT{}.*Member)};
}

// An object's value is asked of the object; null and an argument left out (VT_ERROR) have none.
constexpr auto kTable = [] {
  std::array<TypeRow, VT_UINT + 1> rows{};
  rows[VT_EMPTY] = {load_empty};
  rows[VT_I1] = integer_row<&VARIANT::cVal>();
  rows[VT_I2] = integer_row<&VARIANT::iVal>();
  rows[VT_I4] = integer_row<&VARIANT::lVal>();
  rows[VT_I8] = integer_row<&VARIANT::llVal>();
  rows[VT_INT] = integer_row<&VARIANT::intVal>();
  rows[VT_UI1] = integer_row<&VARIANT::bVal>();
  rows[VT_UI2] = integer_row<&VARIANT::uiVal>();
  rows[VT_UI4] = integer_row<&VARIANT::ulVal>();
  rows[VT_UI8] = integer_row<&VARIANT::ullVal>();
  rows[VT_UINT] = integer_row<&VARIANT::uintVal>();
  rows[VT_R4] = {load_real<&VARIANT::fltVal, Form::single>, store_single};
  rows[VT_R8] = {load_real<&VARIANT::dblVal, Form::real>, store_real};
  rows[VT_CY] = {load_currency, store_currency};
  rows[VT_DATE] = {load_real<&VARIANT::date, Form::date>, store_date};
  rows[VT_BOOL] = {load_boolean, store_boolean};
  rows[VT_BSTR] = {load_text, store_text};
  return rows;
}();

constexpr TypeRow kNoPlainType;

}  // namespace

const TypeRow& row_of(VARTYPE vt) { return vt < kTable.size() ? kTable[vt] : kNoPlainType; }

}  // namespace korlib::variants
