// Kinds of characters as protocols and logs tell them apart: by ASCII alone, whatever the locale.
#pragma once

#include <algorithm>
#include <string>

namespace zelto {

// What steers a terminal, or begins another line, instead of being shown: NUL to US, and DEL.
constexpr bool is_control(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

constexpr bool is_alphanumeric(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// The text as one line of a log, with blanks for its control characters: parts of it may be a client's.
inline std::string plain_line(std::string text) {
  std::ranges::replace_if(text, is_control, ' ');
  return text;
}

}  // namespace zelto
