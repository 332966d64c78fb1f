// Numbers as text.
#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace zelto {

// The integer that is the whole text, digits after a "-" at most; nothing for any other text, and for a number that
// the type cannot hold. An unsigned type takes no "-".
template <class Number>
std::optional<Number> parse_number(std::string_view text, int base = 10) {
  Number value{};
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, value, base);
  return read.ec == std::errc() && read.ptr == end ? std::optional(value) : std::nullopt;
}

}  // namespace zelto
