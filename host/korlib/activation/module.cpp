#include "activation/module.h"

#include <dlfcn.h>

#include <korlib_host/errors.h>
#include <korlib_host/unicode.h>

#include <string>

namespace korlib::activation {

namespace {

// A module asks for its own path with room for so many characters, its NUL among them; without the path
// it could neither be registered nor find its type information.
constexpr std::size_t kPathRoom = 260;

HRESULT require_short_path(const std::filesystem::path& file) {
  const std::size_t length = to_wide(file.native()).size();
  if (length < kPathRoom) return S_OK;
  return fail(CO_E_ERRORINDLL, file.string() + " cannot be used as a module: its path has " + std::to_string(length) +
                                   " characters, and 259 are the most.");
}

}  // namespace

HRESULT fail(HRESULT hr, std::string_view description) { return raise(hr, kSource, to_wide(description)); }

HRESULT Module::open(const std::filesystem::path& file, std::shared_ptr<Module>* module) {
  RETURN_IF_FAILED(require_short_path(file));
  void* const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) {
    const char* const reason = dlerror();
    return fail(CO_E_DLLNOTFOUND, reason ? reason : file.string() + " cannot be opened.");
  }
  std::shared_ptr<Module> opened(new Module(handle));
  opened->get_class_object_ = opened->entry_point<DllGetClassObjectFunction>("DllGetClassObject");
  if (!opened->get_class_object_) {
    return fail(CO_E_ERRORINDLL, file.string() + " is not a component: it does not export DllGetClassObject.");
  }
  opened->can_unload_now_ = opened->entry_point<DllCanUnloadNowFunction>("DllCanUnloadNow");
  opened->main_ = opened->entry_point<DllMainFunction>("DllMain");
  // FALSE means that the module does without something optional, such as type libraries.
  if (opened->main_) opened->main_(handle, DLL_PROCESS_ATTACH, nullptr);
  *module = std::move(opened);
  return S_OK;
}

Module::~Module() {
  if (main_) main_(handle_, DLL_PROCESS_DETACH, nullptr);
  dlclose(handle_);
}

HRESULT Module::class_object(REFCLSID clsid, REFIID riid, void** ppv) const {
  *ppv = nullptr;
  return get_class_object_(clsid, riid, ppv);
}

HRESULT Module::class_object_by_name(const wchar_t* name, REFIID riid, void** ppv) const {
  // The slot carries the name in, and keeps it where the module does not know the class.
  *ppv = const_cast<wchar_t*>(name);
  const HRESULT hr = get_class_object_(CLSID_NULL, riid, ppv);
  if (FAILED(hr)) *ppv = nullptr;
  return hr;
}

bool Module::can_unload() const { return can_unload_now_ && can_unload_now_() == S_OK; }

void* Module::symbol(const char* name) const { return dlsym(handle_, name); }

}  // namespace korlib::activation
