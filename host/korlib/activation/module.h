// Component modules: one that is open, and the list of those that are.
#pragma once

#include <filesystem>
#include <memory>
#include <string_view>

#include <korlib/activation.h>

namespace korlib::activation {

// The source of the errors of this room.
inline constexpr std::wstring_view kSource = L"Activation";

// Sets the thread's error object to the description (UTF-8) and returns `hr`.
HRESULT fail(HRESULT hr, std::string_view description);

// Open from open() until destruction, which tells the module so and closes it.
class Module {
 public:
  // CO_E_DLLNOTFOUND when the file cannot be opened, CO_E_ERRORINDLL when it lacks DllGetClassObject;
  // both with the loader's words as error information.
  static HRESULT open(const std::filesystem::path& file, std::shared_ptr<Module>* module);

  ~Module();
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  HRESULT class_object(REFCLSID clsid, REFIID riid, void** ppv) const;
  // By bare name; null for the first class.
  HRESULT class_object_by_name(const wchar_t* name, REFIID riid, void** ppv) const;

  // A module that does not say that it can be unloaded stays.
  bool can_unload() const;

  // Another entry point, null when the module has none of that name.
  template <class Function>
  Function entry_point(const char* name) const {
    return reinterpret_cast<Function>(symbol(name));
  }

 private:
  explicit Module(void* handle) : handle_(handle) {}
  void* symbol(const char* name) const;

  void* handle_;
  DllMainFunction main_ = nullptr;
  DllGetClassObjectFunction get_class_object_ = nullptr;
  DllCanUnloadNowFunction can_unload_now_ = nullptr;
};

// The module of that file, opened if need be. It stays open at least while the caller holds it.
HRESULT get_module(const std::filesystem::path& file, std::shared_ptr<Module>* module);

}  // namespace korlib::activation
