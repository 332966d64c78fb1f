// Kinds of characters as protocols and logs tell them apart: by ASCII alone, whatever the locale.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace zelto {

// What of ASCII steers a terminal, or begins another line, instead of being shown: NUL to US, and DEL.
constexpr bool is_control(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

// How many bytes the control character has with which the rest of this UTF-8 text begins; 0 when it begins with
// another one. Beside those of ASCII, U+0080 to U+009F steer terminals, and U+2028 and U+2029 begin another line.
constexpr std::size_t control_length(std::string_view rest) {
  if (rest.empty()) return 0;
  if (is_control(rest[0])) return 1;
  const auto byte = [rest](std::size_t at) { return at < rest.size() ? static_cast<unsigned char>(rest[at]) : 0U; };
  if (byte(0) == 0xC2 && byte(1) >= 0x80 && byte(1) < 0xA0) return 2;
  if (byte(0) == 0xE2 && byte(1) == 0x80 && (byte(2) == 0xA8 || byte(2) == 0xA9)) return 3;
  return 0;
}

// The beginning of this UTF-8 text that fits into so many bytes, without a part of a character.
constexpr std::string_view beginning_of(std::string_view text, std::size_t room) {
  if (text.size() <= room) return text;
  while (room > 0 && (static_cast<unsigned char>(text[room]) & 0xC0) == 0x80) --room;
  return text.substr(0, room);
}

// The text as one line of a log, with blanks for its control characters: parts of it may be a client's.
inline std::string plain_line(std::string_view text) {
  std::string line;
  line.reserve(text.size() + 1);  // for whoever ends it
  while (!text.empty()) {
    const std::size_t control = control_length(text);
    line += control > 0 ? ' ' : text.front();
    text.remove_prefix(std::max<std::size_t>(control, 1));
  }
  return line;
}

}  // namespace zelto
