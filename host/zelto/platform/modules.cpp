// GetModuleFileNameW: where a module was loaded from.
#include <korlib/winapi.h>
#include <korlib_host/modules.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "text/charset.h"

// Of a null handle the program's own path. 0 and an empty text when the path does not fit.
extern "C" DWORD GetModuleFileNameW(void* module, wchar_t* buffer, DWORD size) {
  if (!buffer || size == 0) return 0;
  *buffer = L'\0';
  std::error_code error;
  const std::filesystem::path file =
      module ? korlib_host::module_file(module) : std::filesystem::read_symlink("/proc/self/exe", error);
  const std::wstring path = zelto::to_wide(file.string());
  if (path.size() >= size) return 0;
  buffer[path.copy(buffer, path.size())] = L'\0';
  return static_cast<DWORD>(path.size());
}
