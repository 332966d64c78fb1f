#include "activation/registry_lookup.h"

#include <korlib_host/registry_store.h>
#include <korlib_host/unicode.h>

#include <mutex>
#include <string>

namespace korlib::activation {

namespace {

struct Current {
  std::mutex lock;
  std::shared_ptr<korlib_host::RegistryStore> store;
};

Current& current() {
  static auto* const instance = new Current;
  return *instance;
}

}  // namespace

bool find_registered_prog_id(const wchar_t* prog_id, CLSID* clsid) {
  const auto store = korlib_host::registry();
  if (!store) return false;
  const auto text = store->value(std::wstring(prog_id) + L"\\CLSID", L"");
  return text && SUCCEEDED(CLSIDFromString(text->c_str(), clsid));
}

std::filesystem::path find_registered_module(REFCLSID clsid) {
  const auto store = korlib_host::registry();
  if (!store) return {};
  wchar_t id[39];
  StringFromGUID2(clsid, id, 39);
  const auto path = store->value(L"CLSID\\" + std::wstring(id) + L"\\InProcServer32", L"");
  return path ? std::filesystem::path(to_utf8(*path)) : std::filesystem::path();
}

}  // namespace korlib::activation

namespace korlib_host {

void set_registry(std::shared_ptr<RegistryStore> store) {
  korlib::activation::Current& now = korlib::activation::current();
  const std::lock_guard guard(now.lock);
  now.store = std::move(store);
}

std::shared_ptr<RegistryStore> registry() {
  korlib::activation::Current& now = korlib::activation::current();
  const std::lock_guard guard(now.lock);
  return now.store;
}

}  // namespace korlib_host
