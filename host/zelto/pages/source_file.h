// A page's or include's file: its text, and how to tell that it has changed.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

#include <korlib/types.h>

namespace zelto::pages {

// Everything that changes when a file is edited or replaced. Two equal stamps are the same contents, unless
// both were taken within a tick of the file system's clock (SourceBytes::is_settled).
struct FileStamp {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  long long modified = 0;  // nanoseconds
  long long changed = 0;   // likewise, of the entry itself: an edit that restores the time shows here

  friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

// Nothing when there is no such regular file.
std::optional<FileStamp> stamp_of(const std::string& path);

struct SourceBytes {
  std::string bytes;
  FileStamp stamp;
  bool is_settled = true;  // not changed so lately that a further change could leave the stamp as it is
};

// Nothing when it cannot be read. Larger files than kMaxSource are refused likewise.
std::optional<SourceBytes> read_source(const std::string& path);

inline constexpr off_t kMaxSource = 64 << 20;

// The text, by its byte-order mark when it has one (UTF-8, UTF-16), else by the code page.
std::wstring decode_source(std::string_view bytes, LONG code_page);

}  // namespace zelto::pages
