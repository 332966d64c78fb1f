// A UTF-8 text file that is read or written from start to end.
#pragma once

#include <string>
#include <string_view>

#include <korlib/hresult.h>

#include "base/file_descriptor.h"

namespace korlib {

class TextFile {
 public:
  TextFile() = default;
  ~TextFile() { close(); }
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;

  HRESULT open_to_read(std::wstring_view path);
  // `create` makes a file that is missing; `replace` allows one that is there.
  HRESULT open_to_write(std::wstring_view path, bool create, bool replace);
  HRESULT open_to_append(std::wstring_view path, bool create);

  bool is_open() const { return is_open_; }
  bool is_reader() const { return is_reader_; }
  bool at_end() const { return at_ >= text_.size(); }
  LONG line() const { return line_; }

  // Both, or nothing.
  HRESULT write(std::wstring_view text, std::string_view line_end = {});
  // Up to `characters`; without a limit by default.
  std::wstring read(std::size_t characters = std::wstring::npos);
  // Without its line end, which is LF or CR LF.
  std::wstring read_line();
  // What was read is handed out, or else not read.
  struct Place {
    std::size_t at;
    LONG line;
  };
  Place place() const { return {at_, line_}; }
  void go_back(const Place& place) {
    at_ = place.at;
    line_ = place.line;
  }
  HRESULT close();

 private:
  HRESULT open_writer(std::wstring_view path, int flags);
  HRESULT flush();
  void count_lines(std::wstring_view text);

  std::wstring path_;
  base::FileDescriptor file_;  // of a writer
  std::string unwritten_;
  std::wstring text_;  // of a reader, whole
  std::size_t at_ = 0;
  LONG line_ = 1;
  bool is_reader_ = true;
  bool is_open_ = false;
};

}  // namespace korlib
