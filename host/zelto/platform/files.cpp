// Files as the component opens them. Its paths may hold backslashes: it composes them so.
#include <korlib/winapi.h>

#include <cstdio>

#include "intrinsics/text.h"
#include "platform/canonical_path.h"

extern "C" HANDLE CreateFileW(const wchar_t* path, DWORD, DWORD, void*, DWORD, DWORD, HANDLE) {
  if (!path) return invalid_handle();
  const std::string file = zelto::native_path(path);
  // The component's CloseHandle and GetFileTime take a FILE*.
  FILE* opened = std::fopen(file.c_str(), "rbe");
  return opened ? opened : invalid_handle();
}

extern "C" BOOL PathCanonicalizeW(wchar_t* target, const wchar_t* source) {
  if (!target) return FALSE;
  *target = L'\0';
  if (!source) return FALSE;
  const auto canonical = zelto::canonical_path(zelto::native_path(source));
  if (!canonical) return FALSE;
  const std::wstring wide = zelto::to_wide(*canonical);
  if (wide.size() >= MAX_PATH) return FALSE;
  target[wide.copy(target, wide.size())] = L'\0';
  return TRUE;
}
