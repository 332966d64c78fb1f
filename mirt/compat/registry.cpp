// A registry that accepts everything and keeps nothing: registration succeeds where there is no store.
//
// A host with a store replaces all five. It owes handles that its own functions accept, 0 for success
// and any other value for failure, and reads values as text up to the NUL: the sizes given by callers
// count two bytes a character by convention.
#include <korlib/winapi.h>

#include "compat/weak.h"

MIRT_WEAK LONG RegCreateKeyExW(HKEY, const wchar_t*, DWORD, const wchar_t*, DWORD, DWORD, void*, HKEY* result,
                               DWORD* disposition) {
  if (result) *result = nullptr;
  if (disposition) *disposition = 0;
  return ERROR_SUCCESS;
}

MIRT_WEAK LONG RegOpenKeyExW(HKEY, const wchar_t*, DWORD, DWORD, HKEY* result) {
  if (result) *result = nullptr;
  return ERROR_SUCCESS;
}

MIRT_WEAK LONG RegSetValueExW(HKEY, const wchar_t*, DWORD, DWORD, const BYTE*, DWORD) { return ERROR_SUCCESS; }
MIRT_WEAK LONG RegDeleteKeyW(HKEY, const wchar_t*) { return ERROR_SUCCESS; }
MIRT_WEAK LONG RegCloseKey(HKEY) { return ERROR_SUCCESS; }
