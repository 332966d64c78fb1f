#include "script/text.h"

#include <korlib/text.h>

#include <algorithm>
#include <array>

namespace zelto::script {
namespace {

constexpr wchar_t kReplacement = 0xFFFD;

bool is_high(char16_t c) { return (c & 0xFC00) == 0xD800; }
bool is_low(char16_t c) { return (c & 0xFC00) == 0xDC00; }
bool is_character(wchar_t c) { return c >= 0 && c <= 0x10FFFF && (c & ~0x7FF) != 0xD800; }

std::size_t utf16_length(std::wstring_view text) {
  std::size_t length = text.size();
  for (const wchar_t c : text) length += c > 0xFFFF && is_character(c);
  return length;
}

void fill_utf16(std::wstring_view text, char16_t* out) {
  for (const wchar_t c : text) {
    if (!is_character(c)) {
      *out++ = static_cast<char16_t>(kReplacement);
    } else if (c <= 0xFFFF) {
      *out++ = static_cast<char16_t>(c);
    } else {
      *out++ = static_cast<char16_t>(0xD7C0 + (c >> 10));
      *out++ = static_cast<char16_t>(0xDC00 | (c & 0x3FF));
    }
  }
}

bool has_surrogates(std::u16string_view text) {
  bool found = false;  // no early exit: the loop is vectorised
  for (const char16_t c : text) found |= (c & 0xF800) == 0xD800;
  return found;
}

std::size_t utf32_length(std::u16string_view text) {
  std::size_t length = 0;
  for (std::size_t i = 0; i < text.size(); ++i, ++length) {
    if (is_high(text[i]) && i + 1 < text.size() && is_low(text[i + 1])) ++i;
  }
  return length;
}

void fill_utf32(std::u16string_view text, wchar_t* out) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (is_high(c) && i + 1 < text.size() && is_low(text[i + 1])) {
      *out++ = ((c & 0x3FF) << 10 | (text[++i] & 0x3FF)) + 0x10000;
    } else {
      *out++ = is_high(c) || is_low(c) ? kReplacement : static_cast<wchar_t>(c);
    }
  }
}

}  // namespace

JsString::JsString(std::wstring_view text) {
  std::array<char16_t, 256> buffer;
  const std::size_t length = utf16_length(text);
  if (length <= buffer.size()) {
    fill_utf16(text, buffer.data());
    string_ = JSStringCreateWithCharacters(reinterpret_cast<const JSChar*>(buffer.data()), length);
  } else {
    *this = JsString(to_utf16(text));
  }
}

JsString::JsString(std::u16string_view text)
    : string_(JSStringCreateWithCharacters(reinterpret_cast<const JSChar*>(text.data()), text.size())) {}

std::u16string_view JsString::view_of(JSStringRef string) {
  return {reinterpret_cast<const char16_t*>(JSStringGetCharactersPtr(string)), JSStringGetLength(string)};
}

std::u16string to_utf16(std::wstring_view text) {
  std::u16string out(utf16_length(text), u'\0');
  fill_utf16(text, out.data());
  return out;
}

std::wstring to_wide(std::u16string_view text) {
  if (!has_surrogates(text)) return {text.begin(), text.end()};
  std::wstring out(utf32_length(text), L'\0');
  fill_utf32(text, out.data());
  return out;
}

BSTR new_bstr(std::u16string_view text) {
  const bool plain = !has_surrogates(text);
  const std::size_t length = plain ? text.size() : utf32_length(text);
  if (length >= kMaxBstrBytes / sizeof(wchar_t)) return nullptr;
  BSTR out = SysAllocStringLen(nullptr, static_cast<UINT>(length));
  if (!out) return nullptr;
  if (plain) {
    std::copy(text.begin(), text.end(), out);
  } else {
    fill_utf32(text, out);
  }
  return out;
}

std::string to_utf8(std::wstring_view text) {
  std::string out(utf32_utf8(text.data(), text.size(), nullptr, 0), '\0');
  utf32_utf8(text.data(), text.size(), out.data(), out.size());
  return out;
}

std::wstring from_utf8(std::string_view bytes) {
  std::wstring out(utf8_utf32(bytes.data(), bytes.size(), nullptr, 0), L'\0');
  utf8_utf32(bytes.data(), bytes.size(), out.data(), out.size());
  return out;
}

}  // namespace zelto::script
