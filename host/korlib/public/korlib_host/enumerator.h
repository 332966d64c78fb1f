// IEnumVARIANT over values that are known when the enumeration starts.
#pragma once

#include <vector>

#include <korlib/comvariant.h>

namespace korlib {

// Steps through a snapshot; what happens to the collection afterwards does not show.
KORLIB_API HRESULT make_enumerator(std::vector<CComVariant> values, IUnknown** enumerator);

}  // namespace korlib
