// Counts the parts of a multipart body while it arrives, so that one with too many is refused before a page has it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zelto {

// What stands before each part of a body of that Content-Type; empty when it has no parts.
std::string part_delimiter(std::string_view content_type);

// Takes time in proportion to the bytes, however they are cut.
class PartCounter {
 public:
  // An empty delimiter is never found.
  explicit PartCounter(std::string delimiter) : delimiter_(std::move(delimiter)) {}

  void add(std::string_view bytes);
  // How many delimiters there have been: one before each part, and one after the last.
  std::size_t count() const { return count_; }

 private:
  const std::string delimiter_;
  std::string tail_;  // the last bytes, which a delimiter may have begun with
  std::size_t count_ = 0;
};

}  // namespace zelto
