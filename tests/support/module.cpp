#include "support/module.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

namespace test {

Module::Module() : handle_(dlopen(MIRT_MODULE_PATH, RTLD_NOW | RTLD_LOCAL)) {
  if (!handle_) {
    std::fprintf(stderr, "%s\n", dlerror());
    std::abort();
  }
  attached_ = symbol<int(void*, unsigned int, void*)>("DllMain")(handle_, DLL_PROCESS_ATTACH, nullptr);
}

Module::~Module() {
  symbol<int(void*, unsigned int, void*)>("DllMain")(handle_, DLL_PROCESS_DETACH, nullptr);
  dlclose(handle_);
}

void* Module::find(const char* name) const {
  void* found = dlsym(handle_, name);
  if (!found) {
    std::fprintf(stderr, "libmirt.so does not export %s\n", name);
    std::abort();
  }
  return found;
}

HRESULT Module::class_object(REFCLSID clsid, IClassFactory** factory) const {
  *factory = nullptr;
  return symbol<HRESULT(REFCLSID, REFIID, void**)>("DllGetClassObject")(clsid, IID_IClassFactory,
                                                                        reinterpret_cast<void**>(factory));
}

HRESULT Module::class_object(const wchar_t* name, IClassFactory** factory) const {
  *factory = reinterpret_cast<IClassFactory*>(const_cast<wchar_t*>(name));
  return symbol<HRESULT(REFCLSID, REFIID, void**)>("DllGetClassObject")(CLSID_NULL, IID_IClassFactory,
                                                                        reinterpret_cast<void**>(factory));
}

std::string built_file(const char* name) {
  const std::string module = MIRT_MODULE_PATH;
  return module.substr(0, module.rfind('/') + 1) + name;
}

}  // namespace test
