// A page's or include's file: its text, and how to tell that it has changed.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <korlib/types.h>

#include "base/file_stamp.h"

namespace zelto::pages {

using base::FileStamp;

// Nothing when there is no such regular file.
std::optional<FileStamp> stamp_of(const std::string& path);

struct SourceBytes {
  std::string bytes;
  FileStamp stamp;
  bool is_settled = true;  // the stamp was, when it was taken
};

// Nothing when it cannot be read. Larger files than kMaxSource are refused likewise.
std::optional<SourceBytes> read_source(const std::string& path);

inline constexpr off_t kMaxSource = 64 << 20;

// The text, by its byte-order mark when it has one (UTF-8, UTF-16), else by the code page.
std::wstring decode_source(std::string_view bytes, LONG code_page);

}  // namespace zelto::pages
