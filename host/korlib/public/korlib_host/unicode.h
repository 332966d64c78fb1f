// Whole texts from one encoding form into another: UTF-32 in objects (a wchar_t is a character), UTF-8 on the wire and
// in files, UTF-16 in script engines and drivers.
//
// No text is refused. What is not a character (a surrogate on its own, a value above U+10FFFF, an ill-formed sequence
// of bytes) becomes U+FFFD. Lengths are counted in units: characters, bytes, or the 16-bit units of UTF-16. Any thread
// may call anything here; std::bad_alloc is the only exception. NULs are characters as any other, and nothing writes
// one after its result.
//
// The forms are those of the Unicode Standard, chapter 3.9: UTF-32 (D90), UTF-16 (D91), UTF-8 (D92). In UTF-16 a
// character above U+FFFF is a pair of surrogates: its value less 0x10000 has twenty bits, of which the upper ten are
// added to 0xD800 for the first unit and the lower ten to 0xDC00 for the second. Byte order marks are characters here:
// who reads files takes them off.
//
// Drivers' headers have base types of their own, so this one includes none of this system's.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korlib {

// What stands for anything that is not a character.
inline constexpr char32_t kReplacement = 0xFFFD;

// The character itself, or the replacement.
constexpr char32_t scalar(wchar_t c) {
  const auto value = static_cast<char32_t>(c);
  return value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF) ? kReplacement : value;
}

// A text as UTF-8, and UTF-8 as a text. Memory is asked for once. Text that is well-formed survives the way there and
// back.
[[gnu::visibility("default")]] std::string to_utf8(std::wstring_view text);
[[gnu::visibility("default")]] std::wstring to_wide(std::string_view bytes);

// What UTF-8 begins with: a character, or an ill-formed sequence as far as it could have become one (the longest
// subpart that the Unicode Standard replaces as one, table 3-7 telling which bytes may follow which).
struct Utf8Character {
  char32_t value;      // the replacement for what is ill-formed
  std::size_t length;  // bytes, from 1 to 4
  bool is_well_formed;
};
// Of bytes that are not empty. For callers that step through bytes and treat ill-formed ones in a way of their own;
// to_wide() is for whole texts.
[[gnu::visibility("default")]] Utf8Character first_utf8(std::string_view bytes);

// How many units the text has in UTF-16: one more than characters for each of them above U+FFFF.
inline std::size_t utf16_length(std::wstring_view text) {
  std::size_t length = text.size();
  for (const wchar_t c : text) length += scalar(c) > 0xFFFF;
  return length;
}

// Writes utf16_length(text) units to `out`, which has room for them. For memory that somebody else owns, such as the
// buffer of a driver or a script engine.
inline void fill_utf16(std::wstring_view text, char16_t* out) {
  for (const wchar_t wide : text) {
    const char32_t c = scalar(wide);
    if (c <= 0xFFFF) {
      *out++ = static_cast<char16_t>(c);
    } else {
      *out++ = static_cast<char16_t>(0xD7C0 + (c >> 10));  // 0xD800 - (0x10000 >> 10)
      *out++ = static_cast<char16_t>(0xDC00 | (c & 0x3FF));
    }
  }
}

// A text as UTF-16.
inline std::u16string to_utf16(std::wstring_view text) {
  std::u16string units(utf16_length(text), u'\0');
  fill_utf16(text, units.data());
  return units;
}

// Whether a character above U+FFFF stands at that place: the first surrogate of a pair with the second after it. False
// at the second of a pair, at a surrogate without its partner, and at and beyond the end.
constexpr bool is_surrogate_pair(std::u16string_view units, std::size_t at) {
  return at + 1 < units.size() && (units[at] & 0xFC00) == 0xD800 && (units[at + 1] & 0xFC00) == 0xDC00;
}

// How many characters the units make: a pair is one, and so is a surrogate without its partner.
inline std::size_t utf32_length(std::u16string_view units) {
  std::size_t length = 0;
  for (std::size_t i = 0; i < units.size(); i += is_surrogate_pair(units, i) ? 2 : 1) ++length;
  return length;
}

// Writes utf32_length(units) characters to `out`, which has room for them; a surrogate without its partner becomes the
// replacement.
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

// Puts the units' characters after a text, which grows once.
inline void append_utf16(std::wstring& text, std::u16string_view units) {
  const std::size_t length = text.size();
  text.resize(length + utf32_length(units));
  fill_utf32(units, text.data() + length);
}

}  // namespace korlib
