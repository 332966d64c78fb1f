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

// What shows in place of the character that this UTF-8 text begins with, where it turns the direction of those around
// it: a line would read as another one. Nothing for every other character.
constexpr std::string_view direction_escape(std::string_view rest) {
  struct Row {
    std::string_view bytes;
    std::string_view escape;
  };
  constexpr Row kRows[] = {
      {"\xD8\x9C", "\\u061C"},     {"\xE2\x80\x8E", "\\u200E"}, {"\xE2\x80\x8F", "\\u200F"},
      {"\xE2\x80\xAA", "\\u202A"}, {"\xE2\x80\xAB", "\\u202B"}, {"\xE2\x80\xAC", "\\u202C"},
      {"\xE2\x80\xAD", "\\u202D"}, {"\xE2\x80\xAE", "\\u202E"}, {"\xE2\x81\xA6", "\\u2066"},
      {"\xE2\x81\xA7", "\\u2067"}, {"\xE2\x81\xA8", "\\u2068"}, {"\xE2\x81\xA9", "\\u2069"},
  };
  if (rest.empty() || (rest[0] != '\xE2' && rest[0] != '\xD8')) return {};
  for (const Row& row : kRows) {
    if (rest.starts_with(row.bytes)) return row.escape;
  }
  return {};
}

// The text as one line of a log, with blanks for its control characters, and escapes for those that turn the direction
// of writing: parts of it may be a client's.
inline std::string plain_line(std::string_view text) {
  std::string line;
  line.reserve(text.size() + 1);  // for whoever ends it
  while (!text.empty()) {
    if (const std::string_view escape = direction_escape(text); !escape.empty()) {
      line += escape;
      text.remove_prefix(text.front() == '\xD8' ? 2 : 3);
      continue;
    }
    const std::size_t control = control_length(text);
    line += control > 0 ? ' ' : text.front();
    text.remove_prefix(std::max<std::size_t>(control, 1));
  }
  return line;
}

}  // namespace zelto
