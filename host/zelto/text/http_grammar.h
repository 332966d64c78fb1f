// The small words of HTTP's grammar.
#pragma once

#include <algorithm>
#include <string_view>

#include "base/ascii.h"
#include "text/characters.h"

namespace zelto {

// Without the blanks and tabs around it.
constexpr std::string_view trim_blanks(std::string_view text) {
  return base::trimmed(text, [](char c) { return c == ' ' || c == '\t'; });
}

// What names of header fields, and methods, are made of.
constexpr bool is_token(std::string_view text) {
  const auto is_token_character = [](char c) {
    return base::is_alphanumeric(c) || std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
  };
  return !text.empty() && std::ranges::all_of(text, is_token_character);
}

// Whether the text can be a header field's value: no control character ends it or begins another.
constexpr bool is_field_value(std::string_view text) {
  return std::ranges::none_of(text, [](char c) { return is_control(c) && c != '\t'; });
}

// Calls `each` with every piece between two separators, empty ones left out.
template <class Each>
void for_each_piece(std::string_view text, char separator, Each each) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    if (end > 0) each(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

// Calls `each` with every element of a comma-separated list, blanks trimmed, empty ones left out.
template <class Each>
void for_each_element(std::string_view list, Each each) {
  for_each_piece(list, ',', [&](std::string_view piece) {
    if (const std::string_view element = trim_blanks(piece); !element.empty()) each(element);
  });
}

}  // namespace zelto
