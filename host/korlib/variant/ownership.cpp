// Making, clearing and copying VARIANTs: the functions, and the member operations that host code uses. A component that
// was built elsewhere carries the same operations and finds these first.
#include "variant/ownership.h"

#include <cstring>

#include <korlib/comvariant.h>
#include <korlib/unknown.h>

#include "arrays/elements.h"

namespace korlib::variants {

namespace {

constexpr VARTYPE kModifiers = VT_ARRAY | VT_BYREF;

constexpr VARTYPE base_of(VARTYPE vt) { return static_cast<VARTYPE>(vt & ~kModifiers); }

HRESULT copy_bits(const VARIANT& source, VARIANT* target) {
  target->vt = source.vt;
  target->llVal = source.llVal;
  return S_OK;
}

// Into a target that owns nothing, and owns nothing after a failure, whatever its bits are then.
HRESULT copy_value(const VARIANT& source, VARIANT* target) {
  if (source.vt < VT_BSTR) return copy_bits(source, target);
  if (source.vt == VT_BSTR) {
    target->vt = VT_BSTR;
    return arrays::copy_text(&target->bstrVal, source.bstrVal);
  }
  if (!is_variant_type(source.vt)) return DISP_E_BADVARTYPE;
  copy_bits(source, target);
  if (source.vt & VT_BYREF) return S_OK;
  if (source.vt & VT_ARRAY) return source.parray ? SafeArrayCopy(source.parray, &target->parray) : S_OK;
  return arrays::owns_contents(source.vt) ? arrays::copy_element(source.vt, &target->llVal, &source.llVal) : S_OK;
}

HRESULT replace(VARIANT* target, const VARIANT& source) {
  // Copied before the target is cleared: the source may lie in an array that the target owns.
  VARIANT copy{};
  RETURN_IF_FAILED(copy_value(source, &copy));
  const HRESULT hr = VariantClear(target);
  if (FAILED(hr)) {
    VariantClear(&copy);
    return hr;
  }
  return copy_bits(copy, target);
}

}  // namespace

bool is_variant_type(VARTYPE vt) {
  const VARTYPE base = base_of(vt);
  if (base == VT_EMPTY || base == VT_NULL) return vt == base;
  if (base == VT_VARIANT) return vt != base;
  return arrays::element_type(base).size != 0;
}

HRESULT follow(const VARIANT& source, VARIANT* value) {
  make_empty(value);
  if (source.vt <= VT_BSTR) return copy_bits(source, value);
  if (!is_variant_type(source.vt)) return DISP_E_BADVARTYPE;
  if (!(source.vt & VT_BYREF)) return copy_bits(source, value);
  if (!source.byref) return E_INVALIDARG;
  if (source.vt == (VT_BYREF | VT_VARIANT)) {
    const VARIANT& inner = *source.pvarVal;
    return inner.vt == source.vt ? E_INVALIDARG : follow(inner, value);
  }
  value->vt = static_cast<VARTYPE>(source.vt & ~VT_BYREF);
  const std::size_t size = source.vt & VT_ARRAY ? sizeof(void*) : arrays::element_type(value->vt).size;
  std::memcpy(&value->llVal, source.byref, size);
  return S_OK;
}

}  // namespace korlib::variants

void VariantInit(VARIANT* v) {
  if (v) korlib::make_empty(v);
}

HRESULT VariantClear(VARIANT* v) {
  if (!v) return E_INVALIDARG;
  const VARIANT old = *v;
  if (old.vt <= VT_BSTR) {  // nothing, numbers, text: nearly all there are
    korlib::make_empty(v);
    if (old.vt == VT_BSTR) SysFreeString(old.bstrVal);
    return S_OK;
  }
  if (!korlib::variants::is_variant_type(old.vt)) return DISP_E_BADVARTYPE;
  if ((old.vt & VT_ARRAY) && !(old.vt & VT_BYREF)) RETURN_IF_FAILED(SafeArrayDestroy(old.parray));
  // Empty before anything is released: a destructor that comes back here finds nothing twice.
  korlib::make_empty(v);
  const bool is_object = old.vt == VT_DISPATCH || old.vt == VT_UNKNOWN;
  if (is_object && old.punkVal) old.punkVal->Release();
  return S_OK;
}

HRESULT VariantCopy(VARIANT* target, const VARIANT* source) {
  if (!target || !source) return E_INVALIDARG;
  return target == source ? S_OK : korlib::variants::replace(target, *source);
}

HRESULT VariantCopyInd(VARIANT* target, const VARIANT* source) {
  if (!target || !source) return E_INVALIDARG;
  VARIANT value;
  RETURN_IF_FAILED(korlib::variants::follow(*source, &value));
  return target == source && !(source->vt & VT_BYREF) ? S_OK : korlib::variants::replace(target, value);
}

VARIANT::VARIANT(VARIANT&& source) noexcept {
  vt = source.vt;
  wReserved1 = wReserved2 = wReserved3 = 0;
  llVal = source.llVal;
  source.vt = VT_EMPTY;
}

VARIANT& VARIANT::operator=(const VARIANT& source) {
  if (this != &source) VariantCopy(this, &source);
  return *this;
}

VARIANT& VARIANT::operator=(const wchar_t* text) {
  // The text may lie in the string that goes.
  const BSTR copy = text ? SysAllocString(text) : nullptr;
  VariantClear(this);
  vt = VT_BSTR;
  bstrVal = copy;
  return *this;
}

VARIANTARG::VARIANTARG() { VariantInit(this); }

_variant_t::_variant_t() { VariantInit(this); }
_variant_t::~_variant_t() { VariantClear(this); }
