// Functions that a host may lack, looked for when they are needed. Naming one as an import would keep the
// module from being loaded where it is missing.
#pragma once

#include <dlfcn.h>

namespace mirt {

// The function of that name which the host process exports; null where it exports none:
//   if (const auto load = host_function<decltype(LoadTypeLib)>("LoadTypeLib")) load(path, &library);
template <class Function>
Function* host_function(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
}

}  // namespace mirt
