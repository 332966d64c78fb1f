// From a ProgID or an identifier to an object.
//
// Host classes come first, because components rely on them by identifier and they are the most often
// made; then what is registered; then the modules that are found without being registered. No class
// object is kept: each counts as a reference to its module, and asking again costs a look-up.
#include <korlib/activation.h>

#include <algorithm>
#include <string>
#include <utility>

#include <korlib/ptr.h>
#include <korlib_host/class_table.h>
#include <korlib_host/context.h>
#include <korlib_host/errors.h>
#include <korlib_host/registry_store.h>
#include <korlib_host/unicode.h>

#include "activation/class_table.h"
#include "activation/module.h"
#include "activation/unregistered_modules.h"
#include "base/thread.h"

namespace korlib::activation {
namespace {

// Objects that make objects can recurse without an end, a template that includes itself for one. An
// error that can be reported must come before the stack is used up.
constexpr std::size_t kLeastStackRoom = 192u << 10;  // bytes

HRESULT require_stack_room() {
  return base::stack_room() > kLeastStackRoom ? S_OK : raise(kOutOfStack, kSource, L"Out of stack space.");
}

bool find_registered_prog_id(const wchar_t* prog_id, CLSID* clsid) {
  const auto store = korlib_host::registry();
  if (!store) return false;
  const auto text = store->value(std::wstring(prog_id) + L"\\CLSID", L"");
  return text && SUCCEEDED(CLSIDFromString(text->c_str(), clsid));
}

// The module that a class is registered to; empty when it is not.
std::filesystem::path find_registered_module(REFCLSID clsid) {
  const auto store = korlib_host::registry();
  if (!store) return {};
  wchar_t id[39];
  StringFromGUID2(clsid, id, 39);
  const auto path = store->value(L"CLSID\\" + std::wstring(id) + L"\\InProcServer32", L"");
  return path ? std::filesystem::path(to_utf8(*path)) : std::filesystem::path();
}

// The module is held until the caller's call into it is over.
HRESULT module_class_object(REFCLSID clsid, REFIID riid, std::shared_ptr<Module>* module, void** ppv) {
  const std::filesystem::path file = find_registered_module(clsid);
  if (file.empty()) return unregistered_class_object(clsid, riid, module, ppv);
  RETURN_IF_FAILED(get_module(file, module));
  return (*module)->class_object(clsid, riid, ppv);
}

HRESULT get_class_object(REFCLSID clsid, REFIID riid, void** ppv) {
  if (const auto create = host_classes().find(clsid)) return make_class_object(*create, riid, ppv);
  std::shared_ptr<Module> module;
  return module_class_object(clsid, riid, &module, ppv);
}

HRESULT create_instance(REFCLSID clsid, IUnknown* outer, REFIID riid, void** ppv) {
  RETURN_IF_FAILED(require_stack_room());
  if (const auto create = host_classes().find(clsid)) return outer ? CLASS_E_NOAGGREGATION : (*create)(riid, ppv);
  std::shared_ptr<Module> module;
  CComPtr<IClassFactory> class_object;
  RETURN_IF_FAILED(module_class_object(clsid, IID_IClassFactory, &module, class_object.put_void()));
  // A failure may leave an object here: that of an in-context class which could not be bound.
  return class_object->CreateInstance(outer, riid, ppv);
}

HRESULT clsid_from_prog_id(const wchar_t* prog_id, CLSID* clsid) {
  const bool is_known = host_classes().find_prog_id(prog_id, clsid) || find_registered_prog_id(prog_id, clsid) ||
                        find_unregistered_prog_id(prog_id, clsid);
  return is_known ? S_OK : CO_E_CLASSSTRING;
}

thread_local IUnknown* current_context = nullptr;  // counted by the scope that set it

}  // namespace
}  // namespace korlib::activation

using namespace korlib::activation;

HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD, REFIID riid, void** ppv) {
  return korlib::guarded(kSource, ppv, [&] { return create_instance(clsid, outer, riid, ppv); });
}

HRESULT CoGetClassObject(REFCLSID clsid, DWORD, void*, REFIID riid, void** ppv) {
  return korlib::guarded(kSource, ppv, [&] { return get_class_object(clsid, riid, ppv); });
}

HRESULT CLSIDFromProgID(const OLECHAR* prog_id, CLSID* clsid) {
  return korlib::guarded(kSource, clsid,
                         [&] { return prog_id ? clsid_from_prog_id(prog_id, clsid) : CO_E_CLASSSTRING; });
}

std::vector<std::wstring> korlib_host::prog_ids() {
  std::vector<std::wstring> names;
  host_classes().list_prog_ids(&names);
  list_unregistered_prog_ids(&names);
  if (const auto store = registry()) {
    for (std::wstring& key : store->keys(L"")) {
      if (store->has_key(key + L"\\CLSID")) names.push_back(std::move(key));
    }
  }
  std::ranges::sort(names);
  return names;
}

korlib_host::ContextScope::ContextScope(IUnknown* context) noexcept : context_(context), outer_(current_context) {
  current_context = context;
}

korlib_host::ContextScope::~ContextScope() { current_context = outer_; }

HRESULT CoGetObjectContext(REFIID riid, void** ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  return current_context ? current_context->QueryInterface(riid, ppv) : CONTEXT_E_NOCONTEXT;
}
