// Letter case and characters as HTTP has them: ASCII only, whatever the locale.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace zelto {

constexpr char ascii_lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

constexpr bool same_text(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, ascii_lower, ascii_lower);
}

inline std::string lower_text(std::string_view text) {
  std::string lowered(text);
  std::ranges::transform(lowered, lowered.begin(), ascii_lower);
  return lowered;
}

constexpr std::string_view trim_blanks(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

constexpr bool is_alphanumeric(char c) {
  return (c >= '0' && c <= '9') || (ascii_lower(c) >= 'a' && ascii_lower(c) <= 'z');
}

// What names of header fields, and methods, are made of.
constexpr bool is_token(std::string_view text) {
  const auto is_token_character = [](char c) {
    return is_alphanumeric(c) || std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
  };
  return !text.empty() && std::ranges::all_of(text, is_token_character);
}

// Whether the text can be a header field's value: no control character ends it or begins another.
constexpr bool is_field_value(std::string_view text) {
  return std::ranges::none_of(text,
                              [](char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F; });
}

// The byte's two hexadecimal digits, in upper case.
inline void append_hex(std::string& out, char byte) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  out += kDigits[value >> 4U];
  out += kDigits[value & 15U];
}

constexpr int hex_value(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lowered = ascii_lower(c);
  return lowered >= 'a' && lowered <= 'f' ? lowered - 'a' + 10 : -1;
}

// Calls `each` with every element of a comma-separated list, blanks trimmed, empty ones left out.
template <class Each>
void for_each_element(std::string_view list, Each each) {
  while (!list.empty()) {
    const auto comma = std::min(list.find(','), list.size());
    const std::string_view element = trim_blanks(list.substr(0, comma));
    if (!element.empty()) each(element);
    list.remove_prefix(std::min(comma + 1, list.size()));
  }
}

}  // namespace zelto
