// Text as HTML shows it.
#pragma once

#include <korlib/types.h>

#include <string>
#include <string_view>

namespace zelto {

// `< > & "` as their names; a character that the code page lacks as &#n;.
std::wstring html_encode(std::wstring_view text, LONG code_page);
// The same as a string for an out-argument; null when memory is short.
BSTR html_encoded(std::wstring_view text, LONG code_page);

// For pages of the host's own, in UTF-8: `< > & "` as their names, and escapes such as \u202E for what turns the
// direction of those around it.
std::string shown_as_html(std::wstring_view text);

// HTML, given in UTF-8, in the code page's bytes; a character that it lacks as &#n;.
std::string html_bytes(std::string_view html, LONG code_page);

}  // namespace zelto
