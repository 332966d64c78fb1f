#include "classes/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

#include <korlib_host/errors.h>
#include <korlib_host/file_look.h>
#include <korlib_host/memory_limit.h>
#include <korlib_host/unicode.h>

#include "base/file_descriptor.h"
#include "base/file_stamp.h"
#include "base/path_text.h"
#include "classes/byte_store.h"
#include "classes/recent_files.h"

namespace korlib {
namespace {

constexpr int kWriting = O_WRONLY | O_CLOEXEC | O_NONBLOCK;

// 0 or an errno. Opens without waiting for the other end of a pipe, and without following into a device.
int open_regular(const std::string& path, base::FileDescriptor& file, struct stat& status) {
  file = base::FileDescriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!file || fstat(file.get(), &status) != 0) return errno;
  if (S_ISDIR(status.st_mode)) return EISDIR;
  if (!S_ISREG(status.st_mode)) return EINVAL;
  return static_cast<std::uint64_t>(status.st_size) > ByteStore::kMaxSize ? EFBIG : 0;
}

int write_and_close(base::FileDescriptor& file, std::string_view bytes) {
  const int error = base::write_all(file.get(), bytes);
  return file.close() || error != 0 ? error : errno;
}

// 0 or an errno. A file that could not be written whole does not stay.
int create_file(const std::string& path, std::string_view bytes) {
  base::FileDescriptor file(open(path.c_str(), kWriting | O_CREAT | O_EXCL, 0666));
  if (!file) return errno;
  const int error = write_and_close(file, bytes);
  if (error != 0) unlink(path.c_str());
  return error;
}

// 0 or an errno. Room for the bytes is made before the first of them is written, so that a disk without it
// leaves the old contents. They are replaced in place: the file keeps its owner, mode and links.
int replace_contents(const std::string& path, std::string_view bytes) {
  base::FileDescriptor file(open(path.c_str(), kWriting | O_CREAT, 0666));  // made where a link points to nothing
  struct stat before {};
  if (!file || fstat(file.get(), &before) != 0) return errno;
  if (!S_ISREG(before.st_mode)) return write_and_close(file, bytes);
  const auto size = static_cast<off_t>(bytes.size());
  const bool has_room = size <= before.st_size || fallocate(file.get(), 0, 0, size) == 0;
  if (!has_room && (errno == ENOSPC || errno == EDQUOT || errno == EFBIG)) {
    const int error = errno;
    return ftruncate(file.get(), before.st_size) == 0 ? error : errno;
  }
  if (ftruncate(file.get(), size) != 0) return errno;
  return write_and_close(file, bytes);
}

}  // namespace

std::string system_path(std::wstring_view path) {
  if (path.find(L'\0') != path.npos) return {};
  std::string bytes = to_utf8(path);
  if (bytes.find('\\') == std::string::npos || access(bytes.c_str(), F_OK) == 0) return bytes;
  return base::with_slashes(std::move(bytes));
}

bool file_exists(std::wstring_view path) {
  struct stat status {};
  return stat(system_path(path).c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

// Also while a file is closed because its object goes, where nothing may be thrown.
HRESULT raise_file_error(std::wstring_view what, std::wstring_view path, int error, const FileFault& fault) noexcept {
  const HRESULT special = error == ENOENT ? fault.missing : error == EEXIST ? fault.existing : 0;
  const HRESULT hr = special != 0 ? special : fault.hr;
  try {
    const std::string reason = error == EINVAL ? "Not a regular file" : std::generic_category().message(error);
    std::wstring text = L"Cannot ";
    text.append(what).append(L" '").append(path).append(L"': ").append(reason.begin(), reason.end());
    return raise(hr, fault.source, text + L".");
  } catch (const std::bad_alloc&) {
    return hr;  // without words
  }
}

HRESULT load_file(std::wstring_view path, const FileFault& fault, base::GrowingBuffer& contents) {
  contents = {};
  const std::string name = system_path(path);
  RecentFiles& recent = RecentFiles::instance();
  if (const auto known = recent.find(name)) {
    contents.grow(std::max<std::size_t>(known->size(), 1));
    std::ranges::copy(*known, contents.data());
    contents.set_size(known->size());
    return S_OK;
  }
  base::FileDescriptor file;
  struct stat status {};
  if (const int error = open_regular(name, file, status)) return raise_file_error(L"open", path, error, fault);
  const auto size = static_cast<std::size_t>(status.st_size);
  const base::FileStamp stamp = base::FileStamp::of(status);
  const bool is_settled = stamp.is_settled();  // asked before it is read
  if (!korlib_host::may_take(size)) return E_OUTOFMEMORY;
  contents.grow(std::max<std::size_t>(size, 1));
  std::size_t got = 0;
  const int error = base::read_all(file.get(), {contents.data(), size}, got);
  contents.set_size(got);
  if (error != 0) return raise_file_error(L"read", path, error, fault);
  if (is_settled) recent.keep(name, stamp, contents.view());
  return S_OK;
}

HRESULT save_file(std::wstring_view path, std::string_view bytes, bool replace, const FileFault& fault) {
  korlib_host::forget_look();
  const std::string file = system_path(path);
  int error = create_file(file, bytes);
  if (error == EEXIST && replace) error = replace_contents(file, bytes);
  return error == 0 ? S_OK : raise_file_error(L"write", path, error, fault);
}

}  // namespace korlib
