// UTF-32 to the other encoding forms and back; what is no character becomes U+FFFD.
#pragma once

#include <string>
#include <string_view>

namespace korlib {

inline constexpr char32_t kReplacement = 0xFFFD;

constexpr char32_t scalar(wchar_t c) {
  const char32_t value = static_cast<char32_t>(c);
  return value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF) ? kReplacement : value;
}

std::u16string to_utf16(std::wstring_view text);
std::string to_utf8(std::wstring_view text);
std::wstring from_utf8(std::string_view bytes);
void append_utf16(std::wstring& text, std::u16string_view units);

}  // namespace korlib
