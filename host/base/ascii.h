// Kinds of characters that protocols, languages and file formats tell apart by ASCII alone, whatever the locale. A
// character beyond ASCII is of no kind.
#pragma once

#include <string_view>

namespace base {

template <class Char>
constexpr bool is_digit(Char c) {
  return c >= Char{'0'} && c <= Char{'9'};
}

template <class Char>
constexpr Char ascii_lower(Char c) {
  return c >= Char{'A'} && c <= Char{'Z'} ? static_cast<Char>(c | 0x20) : c;
}
template <class Char>
constexpr Char ascii_upper(Char c) {
  return c >= Char{'a'} && c <= Char{'z'} ? static_cast<Char>(c & ~0x20) : c;
}

template <class Char>
constexpr bool is_letter(Char c) {
  return ascii_lower(c) >= Char{'a'} && ascii_lower(c) <= Char{'z'};
}
template <class Char>
constexpr bool is_alphanumeric(Char c) {
  return is_digit(c) || is_letter(c);
}

// The value of a hexadecimal digit in either letter case; -1 for any other character.
template <class Char>
constexpr int hex_value(Char c) {
  if (is_digit(c)) return static_cast<int>(c - Char{'0'});
  const Char lower = ascii_lower(c);
  return lower >= Char{'a'} && lower <= Char{'f'} ? static_cast<int>(lower - Char{'a'}) + 10 : -1;
}

// The text without the characters around it that `is_blank` is true of: what counts as one is the format's to say.
template <class Char, class IsBlank>
constexpr std::basic_string_view<Char> trimmed(std::basic_string_view<Char> text, IsBlank is_blank) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace base
