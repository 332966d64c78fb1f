#include "activation/unregistered_modules.h"

#include <memory>
#include <mutex>

#include <korlib/errorinfo.h>
#include <korlib_host/modules.h>

#include "activation/class_table.h"

namespace korlib::activation {

namespace {

struct BareClass {
  std::filesystem::path file;
  std::wstring name;
};

struct Unregistered {
  std::mutex lock;  // of `files`
  std::vector<std::filesystem::path> files;
  ClassTable<std::shared_ptr<const BareClass>> classes;
};

Unregistered& unregistered() {
  static auto* const instance = new Unregistered;
  return *instance;
}

// A copy, because a module may add others while it is being opened.
std::vector<std::filesystem::path> unregistered_files() {
  Unregistered& all = unregistered();
  const std::lock_guard guard(all.lock);
  return all.files;
}

}  // namespace

bool find_unregistered_prog_id(const wchar_t* prog_id, CLSID* clsid) {
  return unregistered().classes.find_prog_id(prog_id, clsid);
}

void list_unregistered_prog_ids(std::vector<std::wstring>* names) { unregistered().classes.list_prog_ids(names); }

HRESULT unregistered_class_object(REFCLSID clsid, REFIID riid, std::shared_ptr<Module>* module, void** ppv) {
  if (const auto bare = unregistered().classes.find(clsid)) {
    RETURN_IF_FAILED(get_module((*bare)->file, module));
    return (*module)->class_object_by_name((*bare)->name.c_str(), riid, ppv);
  }
  for (const std::filesystem::path& file : unregistered_files()) {
    if (FAILED(get_module(file, module))) continue;
    const HRESULT hr = (*module)->class_object(clsid, riid, ppv);
    if (hr != CLASS_E_CLASSNOTAVAILABLE) return hr;
  }
  *ppv = nullptr;
  SetErrorInfo(0, nullptr);  // that some module could not be opened says nothing about this class
  return REGDB_E_CLASSNOTREG;
}

}  // namespace korlib::activation

namespace korlib_host {

void add_unregistered_module(const std::filesystem::path& file, const std::vector<NamedClass>& classes) {
  korlib::activation::Unregistered& all = korlib::activation::unregistered();
  {
    const std::lock_guard guard(all.lock);
    all.files.push_back(file);
  }
  for (const NamedClass& named : classes) {
    CLSID clsid;
    if (FAILED(CoCreateGuid(&clsid))) continue;
    all.classes.add(
        clsid, named.prog_id.c_str(),
        std::make_shared<korlib::activation::BareClass>(korlib::activation::BareClass{file, named.class_name}));
  }
}

}  // namespace korlib_host
