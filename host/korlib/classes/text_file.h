// A UTF-8 text file that is read or written from start to end.
#pragma once

#include <string>
#include <string_view>

#include "base/file_descriptor.h"
#include "classes/files.h"

namespace korlib {

class TextFile {
 public:
  enum class Way { read, write, append };

  explicit TextFile(FileFault fault) : fault_(fault) {}
  ~TextFile() { close(); }
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;

  HRESULT open_to_read(std::wstring_view path);
  // `create` makes a file that is missing; `replace` allows one that is there.
  HRESULT open_to_write(std::wstring_view path, bool create, bool replace);
  HRESULT open_to_append(std::wstring_view path, bool create);

  bool is_open() const { return is_open_; }
  bool is_reader() const { return way_ == Way::read; }
  bool at_end() const { return at_ >= text_.size(); }
  LONG line() const { return line_; }

  HRESULT write(std::wstring_view text);
  // Up to `characters`; without a limit by default.
  std::wstring read(std::size_t characters = std::wstring::npos);
  // Without its line end, which is LF or CR LF.
  std::wstring read_line();
  HRESULT close();

 private:
  HRESULT open(std::wstring_view path, int how);
  HRESULT flush();
  void count_lines(std::wstring_view text);

  FileFault fault_;
  std::wstring path_;
  base::FileDescriptor file_;  // of a writer
  std::string unwritten_;
  std::wstring text_;  // of a reader, whole
  std::size_t at_ = 0;
  LONG line_ = 1;
  Way way_ = Way::read;
  bool is_open_ = false;
};

}  // namespace korlib
