#include "classes/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>

#include <korlib_host/errors.h>

#include "classes/descriptor.h"
#include "classes/unicode.h"

namespace korlib {
namespace {

std::string to_bytes(std::wstring_view path) {
  if (path.empty() || path.find(L'\0') != std::wstring_view::npos) return {};
  return to_utf8(path);
}

// Opens without waiting for the other end of a pipe, and without following into a device.
Descriptor open_regular(const std::string& path, int& error, std::size_t& size) {
  Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0) {
    error = errno;
    return {};
  }
  if (S_ISDIR(status.st_mode)) {
    error = EISDIR;
  } else if (!S_ISREG(status.st_mode)) {
    error = EINVAL;
  } else if (static_cast<std::uint64_t>(status.st_size) > ByteStore::kMaxSize) {
    error = EFBIG;
  } else {
    size = static_cast<std::size_t>(status.st_size);
    return file;
  }
  return {};
}

int read_all(int file, FileContents& contents) {
  std::size_t got = 0;
  while (got < contents.size) {
    const ssize_t count = read(file, contents.data.get() + got, contents.size - got);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (count == 0) break;  // the file became shorter meanwhile
    got += static_cast<std::size_t>(count);
  }
  contents.size = got;
  return 0;
}

}  // namespace

int write_all(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(file, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return 0;
}

std::string system_path(std::wstring_view path) {
  std::string bytes = to_bytes(path);
  if (bytes.find('\\') == std::string::npos || access(bytes.c_str(), F_OK) == 0) return bytes;
  std::replace(bytes.begin(), bytes.end(), '\\', '/');
  return bytes;
}

bool file_exists(std::wstring_view path) {
  struct stat status {};
  return stat(system_path(path).c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

HRESULT raise_file_error(std::wstring_view what, std::wstring_view path, int error, const FileFault& fault) {
  const std::string reason = error == EINVAL ? "Not a regular file" : std::generic_category().message(error);
  std::wstring text = L"Cannot ";
  text.append(what).append(L" '").append(path).append(L"': ").append(reason.begin(), reason.end());
  const HRESULT special = error == ENOENT ? fault.missing : error == EEXIST ? fault.existing : 0;
  return raise(special != 0 ? special : fault.hr, fault.source, text + L".");
}

HRESULT load_file(std::wstring_view path, const FileFault& fault, FileContents& contents) {
  int error = ENOENT;
  Descriptor file = open_regular(system_path(path), error, contents.size);
  if (!file) return raise_file_error(L"open", path, error, fault);
  contents.data.reset(static_cast<char*>(std::malloc(std::max<std::size_t>(contents.size, 1))));
  if (!contents.data) return E_OUTOFMEMORY;
  error = read_all(file.get(), contents);
  return error == 0 ? S_OK : raise_file_error(L"read", path, error, fault);
}

HRESULT save_file(std::wstring_view path, std::string_view bytes, bool replace, const FileFault& fault) {
  const int how = O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | (replace ? O_TRUNC : O_EXCL);
  Descriptor file(open(system_path(path).c_str(), how, 0666));
  if (!file) return raise_file_error(L"write", path, errno, fault);
  int error = write_all(file.get(), bytes);
  if (!file.close() && error == 0) error = errno;
  return error == 0 ? S_OK : raise_file_error(L"write", path, error, fault);
}

}  // namespace korlib
