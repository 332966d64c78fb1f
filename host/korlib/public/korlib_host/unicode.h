// Whole texts from one encoding form into another: UTF-32 in objects, UTF-8 on the wire and in files,
// UTF-16 in script engines and drivers. What is no character becomes U+FFFD.
//
// Drivers' headers have base types of their own, so this one includes none of this system's.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korlib {

inline constexpr char32_t kReplacement = 0xFFFD;

constexpr char32_t scalar(wchar_t c) {
  const auto value = static_cast<char32_t>(c);
  return value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF) ? kReplacement : value;
}

[[gnu::visibility("default")]] std::string to_utf8(std::wstring_view text);
[[gnu::visibility("default")]] std::wstring to_wide(std::string_view bytes);

inline std::size_t utf16_length(std::wstring_view text) {
  std::size_t length = text.size();
  for (const wchar_t c : text) length += scalar(c) > 0xFFFF;
  return length;
}

// Writes utf16_length(text) units.
inline void fill_utf16(std::wstring_view text, char16_t* out) {
  for (const wchar_t wide : text) {
    const char32_t c = scalar(wide);
    if (c <= 0xFFFF) {
      *out++ = static_cast<char16_t>(c);
    } else {
      *out++ = static_cast<char16_t>(0xD7C0 + (c >> 10));
      *out++ = static_cast<char16_t>(0xDC00 | (c & 0x3FF));
    }
  }
}

inline std::u16string to_utf16(std::wstring_view text) {
  std::u16string units(utf16_length(text), u'\0');
  fill_utf16(text, units.data());
  return units;
}

constexpr bool is_surrogate_pair(std::u16string_view units, std::size_t at) {
  return at + 1 < units.size() && (units[at] & 0xFC00) == 0xD800 && (units[at + 1] & 0xFC00) == 0xDC00;
}

inline std::size_t utf32_length(std::u16string_view units) {
  std::size_t length = 0;
  for (std::size_t i = 0; i < units.size(); i += is_surrogate_pair(units, i) ? 2 : 1) ++length;
  return length;
}

// Writes utf32_length(units) characters; surrogates without a partner are no characters.
inline void fill_utf32(std::u16string_view units, wchar_t* out) {
  for (std::size_t i = 0; i < units.size(); ++i) {
    if (is_surrogate_pair(units, i)) {
      *out++ = ((units[i] & 0x3FF) << 10 | (units[i + 1] & 0x3FF)) + 0x10000;
      ++i;
    } else {
      *out++ = static_cast<wchar_t>(scalar(units[i]));
    }
  }
}

inline void append_utf16(std::wstring& text, std::u16string_view units) {
  const std::size_t length = text.size();
  text.resize(length + utf32_length(units));
  fill_utf32(units, text.data() + length);
}

}  // namespace korlib
