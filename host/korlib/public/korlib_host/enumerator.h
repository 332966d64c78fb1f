// IEnumVARIANT over values that are known when the enumeration starts: what a collection answers for _NewEnum, and what
// scripts step through.
#pragma once

#include <vector>

#include <korlib/comvariant.h>

namespace korlib {

// Gives an enumerator over the values, which it owns from then on: a snapshot, so that what happens to the collection
// afterwards does not show. Clones share the values and have places of their own. One thread at a time steps through
// an enumerator.
//
// *enumerator has one reference, for the caller. Next gives copies, which the caller clears. E_POINTER for a null
// out-argument; throws std::bad_alloc.
KORLIB_API HRESULT make_enumerator(std::vector<CComVariant> values, IUnknown** enumerator);

}  // namespace korlib
