// The answer to a request for a file: all of it, a part, or that the client has it already.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "http/message.h"

namespace zelto {

// A file with what its answers say of it, as it was when it was opened.
struct OpenFile {
  base::FileDescriptor descriptor;
  struct stat about {};
  std::string tag;
  std::string modified;
  // Of the heads of answers with content and without, as in ResponseHead.
  std::string lines;
  std::string lines_alone;
};

// The type comes from the name. Null when the file is not open or not a regular file.
std::shared_ptr<const OpenFile> describe_file(std::string_view name, base::FileDescriptor file);

// Sends the file as the request's conditions and its Range ask; 404 without one.
void send_file(const HttpRequest& request, const std::shared_ptr<const OpenFile>& file, ResponseSink& sink);

inline constexpr std::string_view kUnknownType = "application/octet-stream";
// The Content-Type of a file name, kUnknownType when the extension says nothing. Such a file is sent as a download, so
// that no browser guesses what to do with it.
std::string_view content_type_of(std::string_view file_name);

struct ByteRange {
  bool satisfiable = true;
  std::uint64_t first = 0;
  std::uint64_t length = 0;
};

// What the one range of a Range header asks for of a file of `size` bytes. Nothing when the whole file is to be sent:
// another unit, several ranges, or text that is not a range.
std::optional<ByteRange> parse_range(std::string_view header, std::uint64_t size);

}  // namespace zelto
