// Files as the component opens them, whose composed paths hold backslashes, and where its own file lies.
#include <korlib/winapi.h>
#include <korlib_host/modules.h>

#include <sys/stat.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <new>
#include <string>
#include <system_error>

#include "base/path_text.h"
#include "platform/canonical_path.h"
#include "text/charset.h"

namespace {

// UTF-8, with slashes for backslashes.
std::string native_path(std::wstring_view path) { return base::with_slashes(zelto::to_utf8(path)); }

FILETIME to_file_time(const timespec& when) {
  constexpr std::int64_t kTicksPerSecond = 10'000'000;
  constexpr std::int64_t kEpoch = 116'444'736'000'000'000;  // 1970 in ticks since 1601
  const auto ticks = static_cast<std::uint64_t>(when.tv_sec * kTicksPerSecond + when.tv_nsec / 100 + kEpoch);
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32U)};
}

}  // namespace

// The component expects no exceptions of any of these.

extern "C" HANDLE CreateFileW(const wchar_t* path, DWORD, DWORD, void*, DWORD, DWORD, HANDLE) try {
  if (!path) return invalid_handle();
  const std::string file = native_path(path);
  // The component's CloseHandle and GetFileTime take a FILE*.
  if (FILE* opened = std::fopen(file.c_str(), "rbe")) return opened;
  // "gone/../list.html" is a file to PathCanonicalizeW, and so it is here. The system looks for "gone".
  const auto canonical = zelto::canonical_path(file);
  FILE* opened = canonical ? std::fopen(canonical->c_str(), "rbe") : nullptr;
  return opened ? opened : invalid_handle();
} catch (const std::bad_alloc&) {
  return invalid_handle();
}

// To the tick: a template that is edited twice in one second shows both times.
extern "C" BOOL GetFileTime(HANDLE handle, FILETIME* creation, FILETIME* access, FILETIME* write) {
  if (!handle || handle == invalid_handle()) return FALSE;
  struct stat status {};
  if (::fstat(::fileno(static_cast<std::FILE*>(handle)), &status) != 0) return FALSE;
  if (creation) *creation = to_file_time(status.st_ctim);
  if (access) *access = to_file_time(status.st_atim);
  if (write) *write = to_file_time(status.st_mtim);
  return TRUE;
}

extern "C" BOOL PathCanonicalizeW(wchar_t* target, const wchar_t* source) try {
  if (!target) return FALSE;
  *target = L'\0';
  if (!source) return FALSE;
  const auto canonical = zelto::canonical_path(native_path(source));
  if (!canonical) return FALSE;
  const std::wstring wide = zelto::to_wide(*canonical);
  if (wide.size() >= MAX_PATH) return FALSE;
  target[wide.copy(target, wide.size())] = L'\0';
  return TRUE;
} catch (const std::bad_alloc&) {
  return FALSE;
}

// Of a null handle the program's own path. 0 and an empty text when the path does not fit.
extern "C" DWORD GetModuleFileNameW(void* module, wchar_t* buffer, DWORD size) try {
  if (!buffer || size == 0) return 0;
  *buffer = L'\0';
  std::error_code error;
  const std::filesystem::path file =
      module ? korlib_host::module_file(module) : std::filesystem::read_symlink("/proc/self/exe", error);
  const std::wstring path = zelto::to_wide(file.string());
  if (path.size() >= size) return 0;
  buffer[path.copy(buffer, path.size())] = L'\0';
  return static_cast<DWORD>(path.size());
} catch (const std::bad_alloc&) {
  return 0;
}
