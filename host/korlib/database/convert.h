// Values of a database as scripts hold them.
#pragma once

#include <vector>

#include <korlib/comvariant.h>

#include "odbc/value.h"

namespace korlib {

// Empty, null, or an argument that was left out.
inline bool is_nothing(const VARIANT& value) {
  return value.vt == VT_EMPTY || value.vt == VT_NULL || is_omitted(value);
}

// The elements of an array of values; a single value stands for itself, nothing for none. DISP_E_TYPEMISMATCH for an
// array of several dimensions.
HRESULT elements_of(const VARIANT& given, std::vector<CComVariant>& elements);

// Integers become VT_I4, beyond its range VT_I8; decimals of up to 15 digits VT_R8, longer ones their
// text; NULL becomes VT_NULL.
HRESULT to_variant(const odbc::Value& value, VARIANT* variant);
// As a value of that kind, nothing being NULL; DISP_E_TYPEMISMATCH or DISP_E_OVERFLOW when it has no such form.
HRESULT from_variant(const VARIANT& variant, odbc::Kind kind, odbc::Value& value);

}  // namespace korlib
