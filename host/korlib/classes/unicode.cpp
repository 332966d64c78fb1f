#include "classes/unicode.h"

#include <korlib/text.h>

namespace korlib {
namespace {

constexpr bool is_lead(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool is_trail(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

}  // namespace

std::u16string to_utf16(std::wstring_view text) {
  std::u16string units;
  units.reserve(text.size());
  for (const wchar_t wide : text) {
    const char32_t c = scalar(wide);
    if (c < 0x10000) {
      units.push_back(static_cast<char16_t>(c));
    } else {
      units.push_back(static_cast<char16_t>(0xD7C0 + (c >> 10)));
      units.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
    }
  }
  return units;
}

void append_utf16(std::wstring& text, std::u16string_view units) {
  text.reserve(text.size() + units.size());
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t c = units[i];
    if (is_lead(units[i]) && i + 1 < units.size() && is_trail(units[i + 1])) {
      c = 0x10000 + ((c & 0x3FF) << 10) + (units[++i] & 0x3FFu);
    }
    text.push_back(static_cast<wchar_t>(scalar(static_cast<wchar_t>(c))));
  }
}

std::string to_utf8(std::wstring_view text) {
  std::string bytes(utf32_utf8(text.data(), text.size(), nullptr, 0), '\0');
  utf32_utf8(text.data(), text.size(), bytes.data(), bytes.size());
  return bytes;
}

std::wstring from_utf8(std::string_view bytes) {
  std::wstring text(utf8_utf32(bytes.data(), bytes.size(), nullptr, 0), L'\0');
  utf8_utf32(bytes.data(), bytes.size(), text.data(), text.size());
  return text;
}

}  // namespace korlib
