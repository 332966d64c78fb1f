// How a host brings type libraries.
//
// A component looks for type information when it is loaded, through LoadTypeLib (korlib/typeinfo.h): for that of its
// own interfaces by the path of its module, for that of the host by the same path with "\2" after it. A host that
// brings none still loads components; objects that can be bound late only through type information then cannot.
#pragma once

#include <korlib/typeinfo.h>

namespace korlib_host {

// Answers LoadTypeLib. `path` is never null; *library is null before the call. On success *library is a counted
// reference; on failure, TYPE_E_CANTLOADLIBRARY for a path that it does not know, it is null. Called on any thread, by
// several at once, and from the DllMain of a module that is being loaded. No exception may leave it.
//
// A module may release type information more often than it counted it, so what the library hands out lives as long as
// the process.
using TypeLibraryProvider = HRESULT (*)(const OLECHAR* path, ITypeLib** library);

// LoadTypeLib passes every call on to `provider`; without one (null, as at the start) it answers
// TYPE_E_CANTLOADLIBRARY. This is the one way to supply type libraries: a host does not define a
// LoadTypeLib of its own. It holds for all threads, from the next call on.
KORLIB_API void set_type_library_provider(TypeLibraryProvider provider) noexcept;

}  // namespace korlib_host
