// The lines of a file around a place in it, for the page of an error.
#pragma once

#include <string>
#include <string_view>

#include <korlib/types.h>

namespace zelto {

// In HTML, the line itself marked, and a caret under the column where that is known. Of long lines there is a part.
// Without a character set, the file is read as a page is. Nothing when it cannot be read or has no such line. Lines and
// columns count from 1.
std::string source_excerpt(const std::string& physical, LONG line, LONG column, std::wstring_view charset = {});

}  // namespace zelto
