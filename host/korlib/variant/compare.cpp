// VarCmp: the order of values.
//
// Empty is 0 beside a number and "" beside text. Any number (a boolean and a date are numbers) comes
// before any text. Objects are compared by their values. Two errors are compared by their codes, so that two
// omitted arguments are equal. What has no order, such as an array, an error beside anything else or a number
// that is none, is DISP_E_TYPEMISMATCH.
#include <compare>

#include "base/letter_case.h"
#include "variant/change_type.h"
#include "variant/conversion_table.h"

namespace korlib::variants {

namespace {

HRESULT as_result(std::partial_ordering order) {
  if (order == std::partial_ordering::unordered) return DISP_E_TYPEMISMATCH;
  if (std::is_lt(order)) return VARCMP_LT;
  return std::is_gt(order) ? VARCMP_GT : VARCMP_EQ;
}

// Wide enough that every 64-bit integer, double and currency amount keeps its exact value or, for an
// amount, its order among them.
long double number_of(const Scalar& value) {
  switch (value.form) {
    case Form::real:
    case Form::single:
    case Form::date:
      return value.real;
    case Form::currency:
      return static_cast<long double>(value.integer) / kCurrencyUnit;
    default:
      return static_cast<long double>(value.integer);
  }
}

std::strong_ordering compare_text(std::wstring_view left, std::wstring_view right, ULONG flags) {
  return flags & NORM_IGNORECASE ? base::compare_folded(left, right) : left <=> right;
}

std::partial_ordering compare(const Scalar& left, const Scalar& right, ULONG flags) {
  const bool left_is_text = left.form == Form::text;
  const bool right_is_text = right.form == Form::text;
  if (!left_is_text && !right_is_text) return number_of(left) <=> number_of(right);
  const bool both_read_as_text =
      (left_is_text || left.form == Form::empty) && (right_is_text || right.form == Form::empty);
  if (!both_read_as_text) return left_is_text ? std::partial_ordering::greater : std::partial_ordering::less;
  return compare_text(left.text, right.text, flags);
}

HRESULT load(const VARIANT& value, Scalar* scalar) {
  const TypeRow& row = row_of(value.vt);
  if (!row.load) return DISP_E_TYPEMISMATCH;
  *scalar = row.load(value);
  return S_OK;
}

}  // namespace

}  // namespace korlib::variants

HRESULT VarCmp(const VARIANT* left, const VARIANT* right, LCID, ULONG flags) {
  using namespace korlib::variants;
  if (!left || !right) return E_INVALIDARG;
  // Two texts are what is compared most often, in searches above all.
  if (left->vt == VT_BSTR && right->vt == VT_BSTR) {
    return as_result(compare_text(korlib::view_of(left->bstrVal), korlib::view_of(right->bstrVal), flags));
  }
  PlainValue left_value;
  PlainValue right_value;
  RETURN_IF_FAILED(left_value.load(*left));
  RETURN_IF_FAILED(right_value.load(*right));
  const VARIANT& l = left_value.get();
  const VARIANT& r = right_value.get();
  if (l.vt == VT_NULL || r.vt == VT_NULL) return VARCMP_NULL;
  if (l.vt == VT_ERROR && r.vt == VT_ERROR) return as_result(l.scode <=> r.scode);
  Scalar a;
  Scalar b;
  RETURN_IF_FAILED(load(l, &a));
  RETURN_IF_FAILED(load(r, &b));
  return as_result(compare(a, b, flags));
}
