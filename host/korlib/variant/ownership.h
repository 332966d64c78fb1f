// What a VARIANT refers to.
#pragma once

#include <korlib/variant.h>

namespace korlib::variants {

// Follows references to the value itself. *value borrows: it is neither cleared nor kept beyond the
// source. A null reference, or a reference to a reference to a VARIANT, is E_INVALIDARG.
HRESULT follow(const VARIANT& source, VARIANT* value);

// Whether a VARIANT may be of this type; arrays of each element type and references included.
bool is_variant_type(VARTYPE vt);

}  // namespace korlib::variants
