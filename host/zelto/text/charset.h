// Text between its forms inside the host: UTF-32 in objects, bytes on the wire.
#pragma once

#include <korlib/types.h>
#include <korlib_host/unicode.h>

#include <optional>
#include <string>
#include <string_view>

namespace zelto {

inline constexpr LONG kUtf8CodePage = 65001;

using korlib::to_utf8;
using korlib::to_wide;

// The character set of a Windows code page number as the web names it ("utf-8", "shift_jis",
// "windows-1252"); nothing for a number that is unknown.
std::optional<std::string> charset_of(LONG code_page);
// Fails with a message, for a member of `source` that is given an unknown number.
HRESULT check_code_page(std::wstring_view source, LONG code_page);

// From the code page's bytes; an unknown code page reads as UTF-8.
std::wstring decode(LONG code_page, std::string_view bytes);
// Into the code page's bytes; a character that it lacks becomes '?'.
std::string encode(LONG code_page, std::wstring_view text);
// Whether the code page has the character. UTF-8 has all.
bool encodes(LONG code_page, wchar_t character);

}  // namespace zelto
