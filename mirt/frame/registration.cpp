#include "frame/registration.h"

#include <cwchar>

#include <korlib/winapi.h>

#include "frame/globals.h"

namespace {

struct Registration {
  const wchar_t* prog_id;
  const wchar_t* clsid;  // letter case as it has always been written
};

constexpr Registration kRegistrations[] = {
    {L"Mirt", L"{717FA104-3BC5-4b9e-8112-106B75FD22C4}"},
    {L"Mirt.TextTemplator", L"{6F026685-9E59-4111-9964-05B121FFD6EB}"},
    {L"Mirt.Utility", L"{97F90828-1121-4ef7-98B3-75F95DABFDEB}"},
};

constexpr const wchar_t* kThreadingModel = L"Apartment";
constexpr DWORD kReadWrite = 0x2001F;
constexpr DWORD kClsidBytes = 76;

// A registry key that closes itself once it was opened. The handle itself may be null: a registry that
// keeps nothing gives none.
class Key {
 public:
  Key() = default;
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
  ~Key() {
    if (is_open_) RegCloseKey(key_);
  }

  HRESULT create(HKEY parent, const wchar_t* name) {
    DWORD disposition = 0;
    return opened(RegCreateKeyExW(parent, name, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key_, &disposition));
  }
  HRESULT open(HKEY parent, const wchar_t* name) { return opened(RegOpenKeyExW(parent, name, 0, kReadWrite, &key_)); }
  HKEY get() const { return key_; }

 private:
  HRESULT opened(LONG result) {
    is_open_ = result == ERROR_SUCCESS;
    return is_open_ ? S_OK : E_FAIL;
  }

  HKEY key_ = nullptr;
  bool is_open_ = false;
};

HRESULT set_value(const Key& key, const wchar_t* name, const wchar_t* value, DWORD bytes) {
  const auto* data = reinterpret_cast<const BYTE*>(value);
  return RegSetValueExW(key.get(), name, 0, REG_SZ, data, bytes) == ERROR_SUCCESS ? S_OK : E_FAIL;
}

// Sizes count two bytes a character, as registries do.
HRESULT set_value(const Key& key, const wchar_t* name, const wchar_t* value) {
  return set_value(key, name, value, static_cast<DWORD>(std::wcslen(value) * 2));
}

HRESULT delete_key(HKEY parent, const wchar_t* name) {
  return RegDeleteKeyW(parent, name) == ERROR_SUCCESS ? S_OK : E_FAIL;
}

HRESULT RegistCOM(const wchar_t* progId, const wchar_t* clsid, const wchar_t* threadingModel) {
  const HKEY root = hkey_classes_root();
  Key prog_id_key;
  RETURN_IF_FAILED(prog_id_key.create(root, progId));
  Key prog_id_clsid;
  RETURN_IF_FAILED(prog_id_clsid.create(prog_id_key.get(), L"CLSID"));
  RETURN_IF_FAILED(set_value(prog_id_clsid, nullptr, clsid, kClsidBytes));

  Key classes;
  RETURN_IF_FAILED(classes.open(root, L"CLSID"));
  Key class_key;
  RETURN_IF_FAILED(class_key.create(classes.get(), clsid));
  RETURN_IF_FAILED(set_value(class_key, nullptr, progId));

  Key server;
  RETURN_IF_FAILED(server.create(class_key.get(), L"InProcServer32"));
  RETURN_IF_FAILED(set_value(server, nullptr, g_aDLLPath));
  return set_value(server, L"ThreadingModel", threadingModel);
}

HRESULT UnregistCOM(const wchar_t* progId, const wchar_t* clsid) {
  const HKEY root = hkey_classes_root();
  {
    Key prog_id_key;
    RETURN_IF_FAILED(prog_id_key.open(root, progId));
    RETURN_IF_FAILED(delete_key(prog_id_key.get(), L"CLSID"));
    RETURN_IF_FAILED(delete_key(root, progId));
  }
  Key classes;
  RETURN_IF_FAILED(classes.open(root, L"CLSID"));
  Key class_key;
  RETURN_IF_FAILED(class_key.open(classes.get(), clsid));
  RETURN_IF_FAILED(delete_key(class_key.get(), L"InProcServer32"));
  return delete_key(classes.get(), clsid);
}

}  // namespace

HRESULT mirt::register_classes() {
  for (const Registration& row : kRegistrations) RETURN_IF_FAILED(RegistCOM(row.prog_id, row.clsid, kThreadingModel));
  return S_OK;
}

HRESULT mirt::unregister_classes() {
  for (const Registration& row : kRegistrations) RETURN_IF_FAILED(UnregistCOM(row.prog_id, row.clsid));
  return S_OK;
}
