#include "variant/conversion_table.h"

#include <array>
#include <cmath>
#include <limits>

#include <korlib/combstr.h>

#include "variant/conversion.h"

namespace korlib::variants {

namespace {

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

// True has all bits set in every integer type, the unsigned ones included.
template <auto Member>
HRESULT store_integer(const Scalar& value, VARIANT* v) {
  using Integer = std::remove_reference_t<decltype(v->*Member)>;
  using Limits = std::numeric_limits<Integer>;
  Wide integer = 0;
  RETURN_IF_FAILED(to_integer(value, &integer));
  const bool fits = integer >= Limits::min() && integer <= Limits::max();
  if (!fits && value.form != Form::boolean) return DISP_E_OVERFLOW;
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
HRESULT store_currency(const Scalar& value, VARIANT* v) { return to_currency(value, &v->cyVal.int64); }
HRESULT store_date(const Scalar& value, VARIANT* v) { return to_date(value, &v->date); }
HRESULT store_text(const Scalar& value, VARIANT* v) { return to_text(value, &v->bstrVal); }

HRESULT store_boolean(const Scalar& value, VARIANT* v) {
  bool boolean = false;
  RETURN_IF_FAILED(to_boolean(value, &boolean));
  v->boolVal = boolean ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

template <auto Member>
constexpr TypeRow integer_row() {
  return {true, load_integer<Member>, store_integer<Member>, sizeof(VARIANT{}.*Member)};
}

constexpr VARTYPE kTypes = VT_UINT + 1;

constexpr std::array<TypeRow, kTypes> make_table() {
  std::array<TypeRow, kTypes> rows{};
  rows[VT_EMPTY] = {true, load_empty, nullptr};
  rows[VT_NULL] = {true, nullptr, nullptr};
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
  rows[VT_R4] = {true, load_real<&VARIANT::fltVal, Form::single>, store_single};
  rows[VT_R8] = {true, load_real<&VARIANT::dblVal, Form::real>, store_real};
  rows[VT_CY] = {true, load_currency, store_currency};
  rows[VT_DATE] = {true, load_real<&VARIANT::date, Form::date>, store_date};
  rows[VT_BOOL] = {true, load_boolean, store_boolean};
  rows[VT_BSTR] = {true, load_text, store_text};
  rows[VT_DISPATCH] = {true, nullptr, nullptr};  // an object's value is asked of the object
  rows[VT_UNKNOWN] = {true, nullptr, nullptr};
  rows[VT_ERROR] = {true, nullptr, nullptr};  // an argument left out has no value
  return rows;
}

constexpr std::array<TypeRow, kTypes> kTable = make_table();
constexpr TypeRow kNoSuchType{false, nullptr, nullptr};

}  // namespace

const TypeRow& row_of(VARTYPE vt) { return vt < kTypes ? kTable[vt] : kNoSuchType; }

}  // namespace korlib::variants
