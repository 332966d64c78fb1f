#include "frame/entry_points.h"

#include <algorithm>
#include <atomic>
#include <cwchar>
#include <iterator>

#include <korlib/activation.h>
#include <korlib/ptr.h>
#include <korlib/typeinfo.h>

#include "frame/error.h"
#include "frame/globals.h"
#include "frame/host.h"
#include "frame/registration.h"

namespace {

// Takes the type information of one interface; what the pointer held before is static and stays.
bool take_type_info(ITypeLib* library, const mirt::TypeInfoSlot& row) {
  ITypeInfo* info = nullptr;
  if (!mirt::succeeded_or_forgotten(library->GetTypeInfoOfGuid(*row.iid, &info)) || !info) return false;
  *row.slot = info;
  return true;
}

// Up to the first that is missing.
bool take_all_type_infos(ITypeLib* own, ITypeLib* host) {
  return std::ranges::all_of(mirt::type_info_slots(), [&](const mirt::TypeInfoSlot& row) {
    return take_type_info(row.is_of_host ? host : own, row);
  });
}

// What the host has after the path. A host without type libraries exports no LoadTypeLib.
CComPtr<ITypeLib> load_type_library(const wchar_t* path) {
  CComPtr<ITypeLib> spLibrary;
  const auto load = mirt::host_function<decltype(LoadTypeLib)>("LoadTypeLib");
  if (!load || !mirt::succeeded_or_forgotten(load(path, spLibrary.put()))) spLibrary.reset();
  return spLibrary;
}

bool load_type_libraries() {
  constexpr wchar_t kSecondLibrary[] = L"\\2";
  wchar_t host_path[std::size(g_aDLLPath) + std::size(kSecondLibrary)];
  std::wcscpy(host_path, g_aDLLPath);
  std::wcscat(host_path, kSecondLibrary);

  const CComPtr<ITypeLib> spOwn = load_type_library(g_aDLLPath);
  const CComPtr<ITypeLib> spHost = load_type_library(host_path);
  return spOwn && spHost && take_all_type_infos(spOwn.get(), spHost.get());
}

int attach(void* module) {
  g_hDLL = module;
  GetModuleFileNameW(g_hDLL, g_aDLLPath, static_cast<DWORD>(std::size(g_aDLLPath)));
  g_aDLLPath[std::size(g_aDLLPath) - 1] = 0;  // a host that filled the buffer may have left no NUL
  const bool whole = load_type_libraries();
  DisableThreadLibraryCalls(module);
  return whole ? TRUE : FALSE;
}

// The pointers stay: objects that outlive the detach still answer, and unloading clears them.
int detach() {
  for (const mirt::TypeInfoSlot& row : mirt::type_info_slots()) {
    if (*row.slot) (*row.slot)->Release();
  }
  return TRUE;
}

IClassFactory* class_by_name(const wchar_t* name) {
  if (!name || !*name) return class_table().empty() ? nullptr : class_table().front().object;
  for (const ClassEntry& entry : class_table()) {
    if (std::wcscmp(entry.name, name) == 0) return entry.object;
  }
  return nullptr;
}

IClassFactory* class_by_identifier(REFCLSID clsid) {
  for (const ClassEntry& entry : class_table()) {
    if (IsEqualGUID(*entry.clsid, clsid)) return entry.object;
  }
  return nullptr;
}

}  // namespace

int DllMain(void* hModule, unsigned int reason, void*) {
  switch (reason) {
    case DLL_PROCESS_ATTACH:
      return attach(hModule);
    case DLL_PROCESS_DETACH:
      return detach();
    default:
      return TRUE;
  }
}

HRESULT DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv) {
  if (!ppv) return E_POINTER;
  IClassFactory* object =
      IsEqualGUID(rclsid, CLSID_NULL) ? class_by_name(static_cast<const wchar_t*>(*ppv)) : class_by_identifier(rclsid);
  *ppv = nullptr;
  return object ? object->QueryInterface(riid, ppv) : CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT DllCanUnloadNow() { return std::atomic_ref(g_nRefCount).load() == 0 ? S_OK : S_FALSE; }

HRESULT DllRegisterServer() { return mirt::register_classes(); }

HRESULT DllUnregisterServer() { return mirt::unregister_classes(); }
