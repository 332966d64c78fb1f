// Finds the end of a request's head while it arrives, and refuses what no later step could see any more.
#pragma once

#include <cstddef>
#include <string_view>

namespace zelto {

// Looks at every byte once, however the head arrives.
class HeadScanner {
 public:
  enum class Verdict { kMore, kComplete, kBareLineFeed, kFolded, kTargetTooLong, kTooLarge };

  HeadScanner(std::size_t most_bytes, std::size_t most_lines) : most_bytes_(most_bytes), most_lines_(most_lines) {}

  // `received` is everything received so far, from the first byte of the request line.
  Verdict scan(std::string_view received);
  // After kComplete: the size of the head with its empty line.
  std::size_t size() const { return line_begin_; }

 private:
  std::size_t most_bytes_;
  std::size_t most_lines_;
  std::size_t line_begin_ = 0;
  std::size_t scanned_ = 0;
  std::size_t lines_ = 0;
};

}  // namespace zelto
