// Names and texts that match in any letter case.
//
// Two rules are in use. ASCII: the letters A to Z, whatever the locale, for what protocols and systems define
// (header fields, class names, keywords). Unicode: each character by its simple case folding (CaseFolding.txt of the
// Unicode Character Database, statuses C and S, default), for names that authors and users choose. Neither changes a
// text's length.
#pragma once

#include <algorithm>
#include <compare>
#include <string>
#include <string_view>

#include "base/ascii.h"

namespace base {

constexpr bool equal_ascii(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, ascii_lower<char>, ascii_lower<char>);
}
constexpr bool equal_ascii(std::wstring_view a, std::wstring_view b) {
  return std::ranges::equal(a, b, {}, ascii_lower<wchar_t>, ascii_lower<wchar_t>);
}

inline std::string ascii_lowered(std::string_view text) {
  std::string lowered(text);
  std::ranges::transform(lowered, lowered.begin(), ascii_lower<char>);
  return lowered;
}
inline std::wstring ascii_lowered(std::wstring_view text) {
  std::wstring lowered(text);
  std::ranges::transform(lowered, lowered.begin(), ascii_lower<wchar_t>);
  return lowered;
}

// Of a character beyond ASCII; fold() is what to call.
wchar_t fold_beyond_ascii(wchar_t c);
inline wchar_t fold(wchar_t c) { return c < 0x80 ? ascii_lower(c) : fold_beyond_ascii(c); }

// The form of a text that is the same for every letter case of it.
std::wstring folded(std::wstring_view text);
bool equal_folded(std::wstring_view a, std::wstring_view b);
struct FoldedEqual {
  bool operator()(std::wstring_view a, std::wstring_view b) const { return equal_folded(a, b); }
};
// By the values of the folded characters.
std::strong_ordering compare_folded(std::wstring_view a, std::wstring_view b);

}  // namespace base
