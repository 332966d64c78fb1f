#include "activation/unregistered_modules.h"

#include <mutex>
#include <optional>
#include <shared_mutex>
#include <unordered_map>

#include <korlib/errorinfo.h>
#include <korlib_host/modules.h>

#include "activation/guid_hash.h"
#include "activation/module_list.h"
#include "base/letter_case.h"

namespace korlib::activation {

namespace {

struct BareClass {
  std::filesystem::path file;
  std::wstring name;
};

struct Unregistered {
  std::shared_mutex lock;
  std::vector<std::filesystem::path> files;
  std::unordered_map<std::wstring, CLSID> prog_ids;
  std::unordered_map<CLSID, BareClass, GuidHash> classes;
};

Unregistered& unregistered() {
  static auto* const instance = new Unregistered;
  return *instance;
}

// Copies, because a module may add others while it is being opened.
std::optional<BareClass> find_bare_class(REFCLSID clsid) {
  Unregistered& all = unregistered();
  const std::shared_lock guard(all.lock);
  const auto found = all.classes.find(clsid);
  return found == all.classes.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::filesystem::path> unregistered_files() {
  Unregistered& all = unregistered();
  const std::shared_lock guard(all.lock);
  return all.files;
}

}  // namespace

bool find_unregistered_prog_id(const wchar_t* prog_id, CLSID* clsid) {
  Unregistered& all = unregistered();
  const std::wstring name = base::ascii_lowered(prog_id);
  const std::shared_lock guard(all.lock);
  const auto found = all.prog_ids.find(name);
  if (found == all.prog_ids.end()) return false;
  *clsid = found->second;
  return true;
}

HRESULT unregistered_class_object(REFCLSID clsid, REFIID riid, std::shared_ptr<Module>* module, void** ppv) {
  if (const auto bare = find_bare_class(clsid)) {
    RETURN_IF_FAILED(get_module(bare->file, module));
    return (*module)->class_object_by_name(bare->name.c_str(), riid, ppv);
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
  const std::unique_lock guard(all.lock);
  all.files.push_back(file);
  for (const NamedClass& named : classes) {
    CLSID clsid;
    if (FAILED(CoCreateGuid(&clsid))) continue;
    all.prog_ids.insert_or_assign(base::ascii_lowered(named.prog_id), clsid);
    all.classes.insert_or_assign(clsid, korlib::activation::BareClass{file, named.class_name});
  }
}

HRESULT get_class_object_by_name(const std::filesystem::path& file, const wchar_t* class_name, REFIID riid,
                                 void** ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  std::shared_ptr<korlib::activation::Module> module;
  RETURN_IF_FAILED(korlib::activation::get_module(file, &module));
  return module->class_object_by_name(class_name, riid, ppv);
}

}  // namespace korlib_host
