// Arguments of a late-bound call, as the types that member functions take.
#include <korlib_host/thunks.h>

namespace korlib::detail {
namespace {

HRESULT convert(const VARIANT& argument, CComVariant& converted, VARTYPE vt) {
  if (is_omitted(argument)) return DISP_E_PARAMNOTFOUND;
  return VariantChangeType(&converted, &argument, 0, vt);
}

}  // namespace

HRESULT read_variant(const VARIANT& argument, CComVariant& keep, VARIANT& value) {
  if (argument.vt & VT_BYREF) {
    RETURN_IF_FAILED(VariantCopyInd(&keep, &argument));
    value = VARIANT(static_cast<const VARIANT&>(keep));
    return S_OK;
  }
  value.vt = argument.vt;
  value.llVal = argument.llVal;
  return S_OK;
}

HRESULT read_text(const VARIANT& argument, CComVariant& keep, BSTR& value) {
  if (argument.vt == VT_BSTR) {
    value = argument.bstrVal;
    return S_OK;
  }
  RETURN_IF_FAILED(convert(argument, keep, VT_BSTR));
  value = keep.bstrVal;
  return S_OK;
}

template <class Number>
HRESULT read_number(const VARIANT& argument, Number& value) {
  constexpr auto field = number_form<Number>.field;
  if (argument.vt == number_form<Number>.type) {
    value = argument.*field;
    return S_OK;
  }
  CComVariant converted;
  RETURN_IF_FAILED(convert(argument, converted, number_form<Number>.type));
  value = converted.*field;
  return S_OK;
}
template HRESULT read_number(const VARIANT&, LONG&);
template HRESULT read_number(const VARIANT&, LONGLONG&);
template HRESULT read_number(const VARIANT&, VARIANT_BOOL&);
template HRESULT read_number(const VARIANT&, double&);

HRESULT read_object(const VARIANT& argument, REFIID riid, void** object) {
  *object = nullptr;
  VARIANT followed = argument;
  if (argument.vt == (VT_BYREF | VT_DISPATCH) || argument.vt == (VT_BYREF | VT_UNKNOWN)) {
    followed.vt = static_cast<VARTYPE>(argument.vt & ~VT_BYREF);
    followed.punkVal = argument.ppunkVal ? *argument.ppunkVal : nullptr;
  }
  if (is_omitted(followed)) return DISP_E_PARAMNOTFOUND;
  if (followed.vt == VT_EMPTY || followed.vt == VT_NULL) return S_OK;
  if (followed.vt != VT_DISPATCH && followed.vt != VT_UNKNOWN) return DISP_E_TYPEMISMATCH;
  if (!followed.punkVal) return S_OK;
  return FAILED(followed.punkVal->QueryInterface(riid, object)) ? DISP_E_TYPEMISMATCH : S_OK;
}

}  // namespace korlib::detail
