// How a host brings type libraries.
#pragma once

#include <korlib/typeinfo.h>

namespace korlib_host {

// Answers LoadTypeLib: on success *library is a counted reference, on failure it is null. Called on any
// thread, also while a module is being loaded.
using TypeLibraryProvider = HRESULT (*)(const OLECHAR* path, ITypeLib** library);

// LoadTypeLib passes every call on to `provider`; without one (null, as at the start) it answers
// TYPE_E_CANTLOADLIBRARY. This is the one way to supply type libraries: a host does not define a
// LoadTypeLib of its own.
KORLIB_API void set_type_library_provider(TypeLibraryProvider provider) noexcept;

}  // namespace korlib_host
