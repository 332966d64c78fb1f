// The Range header of a request.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace zelto {

struct ByteRange {
  bool satisfiable = true;
  std::uint64_t first = 0;
  std::uint64_t length = 0;
};

// What one range of a file of `size` bytes asks for. Nothing when the whole file is to be sent: another
// unit, several ranges, or text that is no range.
std::optional<ByteRange> parse_range(std::string_view header, std::uint64_t size);

}  // namespace zelto
