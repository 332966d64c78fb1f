// The registry functions over the process's registry store. Only HKEY_CLASSES_ROOT exists.
#include <korlib/winapi.h>
#include <korlib_host/registry_store.h>

#include <memory>
#include <string>

#include "base/letter_case.h"

namespace {

constexpr LONG kAccessDenied = 5;
constexpr LONG kInvalidHandle = 6;
constexpr LONG kWriteFault = 29;
constexpr LONG kInvalidParameter = 87;

using OpenKey = std::wstring;  // what an open key's handle points at: its path

// The path of a handle and a name below it; false for a null handle.
bool path_below(HKEY key, const wchar_t* sub_key, std::wstring& path) {
  if (!key) return false;
  if (key != hkey_classes_root()) path = *static_cast<OpenKey*>(key);
  if (sub_key && *sub_key) path.append(path.empty() ? L"" : L"\\").append(sub_key);
  return true;
}

HKEY open_handle(std::wstring path) { return std::make_unique<OpenKey>(std::move(path)).release(); }

LONG code_of(HRESULT hr) {
  if (SUCCEEDED(hr)) return ERROR_SUCCESS;
  return hr == E_INVALIDARG ? kInvalidParameter : kWriteFault;
}

}  // namespace

extern "C" LONG RegCreateKeyExW(HKEY key, const wchar_t* sub_key, DWORD, const wchar_t*, DWORD, DWORD, void*,
                                HKEY* result, DWORD* disposition) {
  constexpr DWORD kCreatedNew = 1;
  constexpr DWORD kOpenedExisting = 2;
  if (result) *result = nullptr;
  if (disposition) *disposition = 0;
  std::wstring path;
  if (!path_below(key, sub_key, path)) return kInvalidHandle;
  const auto store = korlib_host::registry();
  if (!store) return kAccessDenied;
  const bool existed = store->has_key(path);
  if (const LONG code = code_of(store->create_key(path)); code != ERROR_SUCCESS) return code;
  if (disposition) *disposition = existed ? kOpenedExisting : kCreatedNew;
  if (result) *result = open_handle(std::move(path));
  return ERROR_SUCCESS;
}

extern "C" LONG RegOpenKeyExW(HKEY key, const wchar_t* sub_key, DWORD, DWORD, HKEY* result) {
  if (result) *result = nullptr;
  std::wstring path;
  if (!path_below(key, sub_key, path)) return kInvalidHandle;
  const auto store = korlib_host::registry();
  if (!store) return ERROR_FILE_NOT_FOUND;
  // The key of all class identifiers is there from the start, also in a store that is still empty.
  const bool is_predefined = base::equal_folded(path, L"clsid");
  if (is_predefined && FAILED(store->create_key(path))) return kWriteFault;
  if (!store->has_key(path)) return ERROR_FILE_NOT_FOUND;
  if (result) *result = open_handle(std::move(path));
  return ERROR_SUCCESS;
}

extern "C" LONG RegSetValueExW(HKEY key, const wchar_t* name, DWORD, DWORD type, const BYTE* data, DWORD) {
  std::wstring path;
  if (!path_below(key, nullptr, path)) return kInvalidHandle;
  if (type != REG_SZ || !data) return kInvalidParameter;
  const auto store = korlib_host::registry();
  if (!store) return kAccessDenied;
  return code_of(store->set_value(path, name ? name : L"", reinterpret_cast<const wchar_t*>(data)));
}

extern "C" LONG RegDeleteKeyW(HKEY key, const wchar_t* sub_key) {
  std::wstring path;
  if (!path_below(key, sub_key, path)) return kInvalidHandle;
  if (!sub_key) return kInvalidParameter;
  const auto store = korlib_host::registry();
  if (!store || !store->has_key(path)) return ERROR_FILE_NOT_FOUND;
  const HRESULT hr = store->delete_key(path);
  return hr == E_INVALIDARG ? kAccessDenied : code_of(hr);  // it is there, so it has keys below it
}

extern "C" LONG RegCloseKey(HKEY key) {
  if (!key) return kInvalidHandle;
  if (key != hkey_classes_root()) std::unique_ptr<OpenKey>(static_cast<OpenKey*>(key)).reset();
  return ERROR_SUCCESS;
}
