// Files as the component looks at them, whose composed paths hold backslashes, and where its own file lies.
#include <korlib/winapi.h>
#include <korlib_host/file_look.h>
#include <korlib_host/modules.h>

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <new>
#include <optional>
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

// What CreateFileW answers with.
struct Times {
  FILETIME changed;
  FILETIME read;
  FILETIME written;
};

}  // namespace

// The component expects no exceptions of any of these.

// The component opens a file for its times alone, of each template that it draws: a handle is what one look at the path
// has told, and no file is opened.
extern "C" HANDLE CreateFileW(const wchar_t* path, DWORD, DWORD, void*, DWORD, DWORD, HANDLE) try {
  if (!path) return invalid_handle();
  const std::string file = native_path(path);
  std::optional<struct stat> status = korlib_host::take_look(file, korlib_host::LookFor::times);
  if (!status && ::stat(file.c_str(), &status.emplace()) != 0) {
    // "gone/../list.html" is a file to PathCanonicalizeW, and so it is here. The system looks for "gone".
    const auto canonical = zelto::canonical_path(file);
    if (!canonical || ::stat(canonical->c_str(), &*status) != 0) return invalid_handle();
  }
  return new Times{to_file_time(status->st_ctim), to_file_time(status->st_atim), to_file_time(status->st_mtim)};
} catch (const std::bad_alloc&) {
  return invalid_handle();
}

extern "C" BOOL CloseHandle(HANDLE handle) {
  if (!handle || handle == invalid_handle()) return FALSE;
  delete static_cast<Times*>(handle);
  return TRUE;
}

// To the tick: a template that is edited twice in one second shows both times.
extern "C" BOOL GetFileTime(HANDLE handle, FILETIME* creation, FILETIME* access, FILETIME* write) {
  if (!handle || handle == invalid_handle()) return FALSE;
  const auto& times = *static_cast<const Times*>(handle);
  if (creation) *creation = times.changed;
  if (access) *access = times.read;
  if (write) *write = times.written;
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
