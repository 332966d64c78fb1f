// VarCmp: the order of values.
//
// Empty is 0 beside a number and "" beside text. Any number (a boolean and a date are numbers) comes
// before any text. Objects are compared by their values. Two errors are compared by their codes, so that two
// omitted arguments are equal. What has no order, such as an array, an error beside anything else or a number
// that is none, is DISP_E_TYPEMISMATCH.
#include <compare>

#include "base/letter_case.h"
#include "variant/change_type.h"
#include "variant/conversion.h"

namespace korlib::variants {

namespace {

HRESULT as_result(std::partial_ordering order) {
  if (order == std::partial_ordering::unordered) return DISP_E_TYPEMISMATCH;
  if (std::is_lt(order)) return VARCMP_LT;
  return std::is_gt(order) ? VARCMP_GT : VARCMP_EQ;
}

std::strong_ordering compare_text(std::wstring_view left, std::wstring_view right, ULONG flags) {
  return flags & NORM_IGNORECASE ? base::compare_folded(left, right) : left <=> right;
}

std::partial_ordering compare(const Scalar& left, const Scalar& right, ULONG flags) {
  // Wide enough that every 64-bit integer, double and currency amount keeps its exact value or, for an
  // amount, its order among them.
  if (!left.is_text() && !right.is_text()) return left.number<long double>() <=> right.number<long double>();
  const auto reads_as_text = [](const Scalar& value) { return value.is_text() || value.form == Form::empty; };
  if (reads_as_text(left) && reads_as_text(right)) return compare_text(left.text, right.text, flags);
  return left.is_text() ? std::partial_ordering::greater : std::partial_ordering::less;
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
