// The member operations of VARIANT, as the host's own code uses them. A component that was built
// elsewhere carries the same ones and finds these first.
#include <korlib/variant.h>

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
