// A value converted to another type, with what holds for every conversion.
#pragma once

#include <korlib/comvariant.h>

#include "text_input.h"

namespace fuzz {

struct Converted {
  HRESULT hr = E_UNEXPECTED;
  CComVariant value;
};

inline Converted convert(const VARIANT& value, VARTYPE type) {
  Converted made;
  made.hr = VariantChangeType(&made.value, &value, 0, type);
  require(made.hr == S_OK || made.hr == DISP_E_TYPEMISMATCH || made.hr == DISP_E_OVERFLOW, "one of three ends");
  require(made.value.vt == (made.hr == S_OK ? type : VARTYPE{VT_EMPTY}), "a value of the type, or none");
  return made;
}

}  // namespace fuzz
