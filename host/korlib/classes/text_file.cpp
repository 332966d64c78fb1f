#include "classes/text_file.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

#include <korlib_host/file_look.h>
#include <korlib_host/unicode.h>

#include "classes/files.h"
#include "classes/script_errors.h"

namespace korlib {
namespace {

constexpr std::size_t kBufferSize = std::size_t{64} * 1024;
constexpr FileFault kFault{L"Scripting.TextStream", kPermissionDenied, kFileNotFound, kFileExists};

}  // namespace

HRESULT TextFile::open_to_read(std::wstring_view path) {
  base::GrowingBuffer contents;
  RETURN_IF_FAILED(load_file(path, kFault, contents));
  std::string_view bytes = contents.view();
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  text_ = to_wide(bytes);
  path_ = path;
  is_reader_ = true;
  is_open_ = true;
  return S_OK;
}

HRESULT TextFile::open_writer(std::wstring_view path, int flags) {
  korlib_host::forget_look();
  path_ = path;
  file_ = base::FileDescriptor(open(system_path(path).c_str(), flags | O_WRONLY | O_CLOEXEC | O_NONBLOCK, 0666));
  if (!file_) return raise_file_error(L"write", path, errno, kFault);
  is_reader_ = false;
  is_open_ = true;
  return S_OK;
}

HRESULT TextFile::open_to_write(std::wstring_view path, bool create, bool replace) {
  return open_writer(path, O_TRUNC | (create ? O_CREAT : 0) | (replace ? 0 : O_EXCL));
}

HRESULT TextFile::open_to_append(std::wstring_view path, bool create) {
  return open_writer(path, O_APPEND | (create ? O_CREAT : 0));
}

void TextFile::count_lines(std::wstring_view text) {
  line_ += static_cast<LONG>(std::count(text.begin(), text.end(), L'\n'));
}

HRESULT TextFile::write(std::wstring_view text, std::string_view line_end) {
  const std::string bytes = to_utf8(text).append(line_end);
  unwritten_ += bytes;
  line_ += static_cast<LONG>(std::ranges::count(bytes, '\n'));
  return unwritten_.size() < kBufferSize ? S_OK : flush();
}

HRESULT TextFile::flush() {
  korlib_host::forget_look();
  const int error = base::write_all(file_.get(), unwritten_);
  unwritten_.clear();
  return error == 0 ? S_OK : raise_file_error(L"write", path_, error, kFault);
}

std::wstring TextFile::read(std::size_t characters) {
  std::wstring read = text_.substr(at_, characters);
  at_ += read.size();
  count_lines(read);
  return read;
}

std::wstring TextFile::read_line() {
  const std::size_t end = text_.find(L'\n', at_);
  std::wstring line = read(end == std::wstring::npos ? end : end + 1 - at_);
  if (line.ends_with(L'\n')) line.pop_back();
  if (line.ends_with(L'\r')) line.pop_back();
  return line;
}

HRESULT TextFile::close() {
  if (!is_open_) return S_OK;
  is_open_ = false;
  text_.clear();
  at_ = 0;
  if (is_reader()) return S_OK;
  const HRESULT hr = flush();
  if (!file_.close() && SUCCEEDED(hr)) return raise_file_error(L"write", path_, errno, kFault);
  return hr;
}

}  // namespace korlib
