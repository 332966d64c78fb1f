// Conversion between any two types of VARIANT.
#pragma once

#include <korlib/comvariant.h>

namespace korlib::variants {

// The value itself for a plain value; for an object the value of its default member, and of that one's
// in turn. Null, omitted arguments and arrays are values in this sense. A chain of objects that does not
// end is DISP_E_TYPEMISMATCH.
HRESULT plain_value(const VARIANT& source, CComVariant* value);

}  // namespace korlib::variants
