// The VARIANT member operations, for a host that does not export its own.
#include <korlib/variant.h>

#include "compat/weak.h"

// A replacement takes the value over without copying or freeing, and leaves the source VT_EMPTY.
MIRT_WEAK VARIANT::VARIANT(VARIANT&& source) noexcept {
  vt = source.vt;
  wReserved1 = wReserved2 = wReserved3 = 0;
  llVal = source.llVal;
  source.vt = VT_EMPTY;
}

// A replacement clears what is held and copies deeply; assigning an object to itself changes nothing.
MIRT_WEAK VARIANT& VARIANT::operator=(const VARIANT& source) {
  if (this != &source) VariantCopy(this, &source);
  return *this;
}

// A replacement clears what is held; the text is copied, and null becomes a null string.
MIRT_WEAK VARIANT& VARIANT::operator=(const wchar_t* text) {
  // The text may lie in the string that goes.
  const BSTR copy = text ? SysAllocString(text) : nullptr;
  VariantClear(this);
  vt = VT_BSTR;
  bstrVal = copy;
  return *this;
}

// Replacements start out VT_EMPTY, and _variant_t clears itself.
MIRT_WEAK VARIANTARG::VARIANTARG() { VariantInit(this); }
MIRT_WEAK _variant_t::_variant_t() { VariantInit(this); }
MIRT_WEAK _variant_t::~_variant_t() { VariantClear(this); }
