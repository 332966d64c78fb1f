// Whole texts between UTF-8 and UTF-32.
#pragma once

#include <string>
#include <string_view>

#include <korlib/text.h>

namespace korlib {

inline std::string to_utf8(std::wstring_view text) {
  std::string bytes(utf32_utf8(text.data(), text.size(), nullptr, 0), '\0');
  utf32_utf8(text.data(), text.size(), bytes.data(), bytes.size());
  return bytes;
}

inline std::wstring to_wide(std::string_view bytes) {
  std::wstring text(utf8_utf32(bytes.data(), bytes.size(), nullptr, 0), L'\0');
  utf8_utf32(bytes.data(), bytes.size(), text.data(), text.size());
  return text;
}

}  // namespace korlib
