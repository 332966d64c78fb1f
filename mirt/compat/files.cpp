// Files, their times, and paths.
#include <sys/stat.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include <korlib/text.h>
#include <korlib/winapi.h>

#include "compat/weak.h"

namespace {

constexpr std::size_t kPathBytes = 4096;  // with the NUL

// The path as the file system takes it; false when it does not fit.
bool to_file_system(const wchar_t* path, char (&bytes)[kPathBytes]) {
  const std::size_t length = utf32_utf8(path, std::wcslen(path), bytes, kPathBytes - 1);
  if (length > kPathBytes - 1) return false;
  bytes[length] = '\0';
  return true;
}

// Whole seconds since 1970 as 100-nanosecond ticks since 1601; what lies between seconds is dropped.
FILETIME to_file_time(const timespec& time) {
  constexpr ULONGLONG kTicksPerSecond = 10'000'000;
  constexpr ULONGLONG kTicksTo1970 = 116'444'736'000'000'000;
  const ULONGLONG ticks = static_cast<ULONGLONG>(time.tv_sec) * kTicksPerSecond + kTicksTo1970;
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

ULONGLONG ticks_of(const FILETIME& time) {
  return static_cast<ULONGLONG>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

}  // namespace

// Opens for reading, whatever is asked for; nothing is ever created. A replacement returns a FILE*, or
// invalid_handle(), unless it replaces CloseHandle and GetFileTime as well. It may accept paths that
// this one can't open: with backslashes, say.
MIRT_WEAK HANDLE CreateFileW(const wchar_t* path, DWORD, DWORD, void*, DWORD, DWORD, HANDLE) {
  char bytes[kPathBytes];
  if (!path || !to_file_system(path, bytes)) return invalid_handle();
  std::FILE* file = std::fopen(bytes, "rb");
  return file ? file : invalid_handle();
}

// Replaced together with CreateFileW or not at all.
MIRT_WEAK BOOL CloseHandle(HANDLE handle) {
  if (!handle || handle == invalid_handle()) return FALSE;
  return std::fclose(static_cast<std::FILE*>(handle)) == 0 ? TRUE : FALSE;
}

// Replaced together with CreateFileW or not at all. The creation time is that of the last status change.
MIRT_WEAK BOOL GetFileTime(HANDLE handle, FILETIME* creation, FILETIME* access, FILETIME* write) {
  if (!handle || handle == invalid_handle()) return FALSE;
  struct stat status {};
  if (fstat(fileno(static_cast<std::FILE*>(handle)), &status) != 0) return FALSE;
  if (creation) *creation = to_file_time(status.st_ctim);
  if (access) *access = to_file_time(status.st_atim);
  if (write) *write = to_file_time(status.st_mtim);
  return TRUE;
}

// A replacement owes the sign of a - b over the whole 64 bits.
MIRT_WEAK LONG CompareFileTime(const FILETIME* a, const FILETIME* b) {
  if (!a || !b) return 0;
  const ULONGLONG left = ticks_of(*a);
  const ULONGLONG right = ticks_of(*b);
  return left < right ? -1 : (left > right ? 1 : 0);
}

// Knows no path. A host that does writes it with its NUL, at most `size` characters together, and
// answers its length; registration then names the module, and DllMain finds its type libraries.
MIRT_WEAK DWORD GetModuleFileNameW(void*, wchar_t* buffer, DWORD size) {
  if (buffer && size) *buffer = 0;
  return 0;
}

// Resolves against the file system, symbolic links included, so what does not exist has no canonical
// form. `target` has room for MAX_PATH characters: a longer result is cut to MAX_PATH - 1 and the NUL.
// A replacement owes a path free of "." and "..", since permission is judged by its beginning, and the
// same bound.
MIRT_WEAK BOOL PathCanonicalizeW(wchar_t* target, const wchar_t* source) {
  char bytes[kPathBytes];
  if (!target || !source || !to_file_system(source, bytes)) return FALSE;
  for (char* at = bytes; (at = std::strchr(at, '\\')) != nullptr;) *at = '/';
  char resolved[PATH_MAX];
  if (!realpath(bytes, resolved)) return FALSE;
  const std::size_t length = utf8_utf32(resolved, std::strlen(resolved), target, MAX_PATH - 1);
  target[length < MAX_PATH - 1 ? length : MAX_PATH - 1] = 0;
  return TRUE;
}
