// Writing the module's classes into the registry, and taking them out.
#pragma once

#include <korlib/hresult.h>

namespace mirt {

// Every creatable class under HKEY_CLASSES_ROOT, one after the other. E_FAIL at the first step that fails,
// and the classes behind it are left alone; every key opened is closed.
HRESULT register_classes();
HRESULT unregister_classes();

}  // namespace mirt
