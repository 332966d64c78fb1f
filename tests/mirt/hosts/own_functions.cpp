#include "mirt/hosts/own_functions.h"

#include <algorithm>
#include <cstdint>
#include <cwchar>
#include <iterator>

#include <korlib/activation.h>
#include <korlib/typeinfo.h>
#include <korlib/winapi.h>

namespace test {

RecordedRegistry registry;
ITypeLib* own_library = nullptr;
ITypeLib* host_library = nullptr;
std::vector<std::wstring> loaded_paths;
std::wstring module_path;
unsigned long tick_count = 0;
bool mapping_fails = false;
int mapping_failure = 0;
int calls_disabled = 0;
void* disabled_module = nullptr;
void* asked_module = nullptr;
DWORD asked_size = 0;
std::vector<unsigned int> sleeps;
HRESULT guid_failure = S_OK;
std::wstring guid_text;

namespace {

// Numbers are written out here: what the component calls with is compared with them.
constexpr std::uintptr_t kClassesRoot = 0x80000000;
constexpr DWORD kSetValue = 2;
constexpr DWORD kReadAndWrite = 0x2001F;
constexpr DWORD kText = 1;

// Keys are their own paths.
const std::wstring& path_of(HKEY key) {
  static const std::wstring root = L"HKCR";
  return reinterpret_cast<std::uintptr_t>(key) == kClassesRoot ? root : *static_cast<std::wstring*>(key);
}

LONG recorded(std::wstring call) {
  registry.calls.push_back(std::move(call));
  return static_cast<int>(registry.calls.size()) == registry.failing_call ? 5 : 0;
}

LONG open(const wchar_t* how, HKEY key, const wchar_t* sub_key, HKEY* result) {
  const std::wstring path = path_of(key) + L"\\" + sub_key;
  *result = nullptr;
  const LONG failed = recorded(how + path);
  if (failed) return failed;
  *result = new std::wstring(path);
  ++registry.open_keys;
  return 0;
}

}  // namespace
}  // namespace test

using test::path_of;
using test::recorded;

LONG RegCreateKeyExW(HKEY key, const wchar_t* sub_key, DWORD, const wchar_t*, DWORD, DWORD access, void*, HKEY* result,
                     DWORD*) {
  return access == test::kSetValue ? test::open(L"create ", key, sub_key, result) : 5;
}

LONG RegOpenKeyExW(HKEY key, const wchar_t* sub_key, DWORD, DWORD access, HKEY* result) {
  return access == test::kReadAndWrite ? test::open(L"open ", key, sub_key, result) : 5;
}

LONG RegSetValueExW(HKEY key, const wchar_t* name, DWORD, DWORD type, const BYTE* data, DWORD bytes) {
  if (type != test::kText) return 5;
  return recorded(L"set " + path_of(key) + L" [" + (name ? name : L"") + L"] = " +
                  reinterpret_cast<const wchar_t*>(data) + L" (" + std::to_wstring(bytes) + L")");
}

LONG RegDeleteKeyW(HKEY key, const wchar_t* sub_key) { return recorded(L"delete " + path_of(key) + L"\\" + sub_key); }

LONG RegCloseKey(HKEY key) {
  delete static_cast<std::wstring*>(key);
  --test::registry.open_keys;
  return 0;
}

DWORD GetModuleFileNameW(void* module, wchar_t* buffer, DWORD size) {
  test::asked_module = module;
  test::asked_size = size;
  const std::size_t length = std::min<std::size_t>(test::module_path.size(), size);
  std::copy_n(test::module_path.data(), length, buffer);
  if (length < size) buffer[length] = 0;
  return static_cast<DWORD>(length);
}

HRESULT LoadTypeLib(const OLECHAR* path, ITypeLib** library) {
  const std::wstring name = path;
  test::loaded_paths.push_back(name);
  const bool is_second = name.size() >= 2 && name.compare(name.size() - 2, 2, L"\\2") == 0;
  *library = is_second ? test::host_library : test::own_library;
  if (!*library) return TYPE_E_CANTLOADLIBRARY;
  (*library)->AddRef();
  return S_OK;
}

BOOL DisableThreadLibraryCalls(void* module) {
  ++test::calls_disabled;
  test::disabled_module = module;
  return TRUE;
}

void Sleep(unsigned int milliseconds) { test::sleeps.push_back(milliseconds); }

// These two are the runtime's; a program that has its own replaces them too.
HRESULT CoCreateGuid(GUID* guid) {
  *guid = GUID_NULL;
  return test::guid_failure;
}

INT StringFromGUID2(REFGUID, OLECHAR* out, INT capacity) {
  const std::size_t length = test::guid_text.size();
  if (length == 0 || length >= static_cast<std::size_t>(capacity)) return 0;
  std::copy_n(test::guid_text.c_str(), length + 1, out);
  return static_cast<INT>(length) + 1;
}

unsigned long GetTickCount() { return test::tick_count; }

// Maps "a" to two characters, so that sizes differ, and shows the flags in the first one.
int LCMapStringW(unsigned int locale, unsigned int flags, const wchar_t* source, int source_length, wchar_t* target,
                 int target_length) {
  if (test::mapping_fails) return test::mapping_failure;
  std::wstring mapped(1, flags == 0x80000000u ? L'W' : flags == LCMAP_HALFWIDTH ? L'N' : L'?');
  if (locale != 0x110000) mapped += L'?';
  for (int i = 0; i < source_length; ++i)
    mapped += source[i] == L'a' ? std::wstring(L"aa") : std::wstring(1, source[i]);
  const int needed = static_cast<int>(mapped.size());
  if (!target || target_length < 1) return needed;
  if (target_length < needed) return 0;
  std::copy(mapped.begin(), mapped.end(), target);
  return needed;
}
