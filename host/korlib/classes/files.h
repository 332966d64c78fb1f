// Files by the paths that pages use, with errors that name the file.
#pragma once

#include <string>
#include <string_view>

#include <korlib/hresult.h>

#include "base/growing_buffer.h"

namespace korlib {

// Who is speaking in an error, and the numbers that it has there; 0 where `hr` serves as well.
struct FileFault {
  std::wstring_view source;  // lives as long as the process
  HRESULT hr;
  HRESULT missing = 0;
  HRESULT existing = 0;
};

// The path as the file system takes it: as given when a file of that name is there, else with '/' for
// every '\'. Empty when it cannot be a path.
std::string system_path(std::wstring_view path);

bool file_exists(std::wstring_view path);

// The whole of a regular file of less than 2 GiB.
HRESULT load_file(std::wstring_view path, const FileFault& fault, base::GrowingBuffer& contents);

// Writes a file: a new one, or with `replace` in place of one that is there.
HRESULT save_file(std::wstring_view path, std::string_view bytes, bool replace, const FileFault& fault);

// Fails with "Cannot … 'path': reason".
HRESULT raise_file_error(std::wstring_view what, std::wstring_view path, int error, const FileFault& fault) noexcept;

}  // namespace korlib
