// Text to bytes and back. The host supplies these functions.
//
// All three answer the size that the whole result needs, in units of the target, and write at most
// `capacity` of them; ask with capacity 0 for the size. No terminator is read or written: lengths are
// explicit. What is not a character (a surrogate, a value above U+10FFFF, a malformed or overlong byte
// sequence) becomes U+FFFD, one per maximal ill-formed subsequence as the Unicode Standard (chapter 3,
// "U+FFFD Substitution of Maximal Subparts") recommends. A target cut short by `capacity` ends between
// characters.
#pragma once

#include <korlib/types.h>

extern "C" {
// Between the text of this system and UTF-8: `length` counts characters in the one, bytes in the other. `text`
// and `bytes` may be null with a length of 0, `out` with a capacity of 0.
KORLIB_API std::size_t utf32_utf8(const wchar_t* text, std::size_t length, char* out, std::size_t capacity);
KORLIB_API std::size_t utf8_utf32(const char* bytes, std::size_t length, wchar_t* out, std::size_t capacity);
// From the Windows code page of that number (65001 is UTF-8, 932 Shift_JIS, 1252 Western …); bytes that
// the code page does not define become U+FFFD. An unknown code page answers kUnknownCodePage. A host may
// do without this one: a component looks for it when it is needed, and then has UTF-8 only.
KORLIB_API std::size_t codepage_utf32(UINT code_page, const char* bytes, std::size_t length, wchar_t* out,
                                      std::size_t capacity);
}

// What no size can be: the code page has no conversion.
inline constexpr std::size_t kUnknownCodePage = static_cast<std::size_t>(-1);
