// The lines of a file around a place in it, for the page of an error.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <korlib/types.h>

namespace zelto {

// How the file is to be read. Nothing: as a page is, by its own directive or else as UTF-8.
struct SourceReading {
  std::wstring_view charset = {};       // that the component has read a template in
  std::vector<std::string> pages = {};  // that may have included the file, which is in the code page of its page
};

// In HTML, the line itself marked, and a caret under the column where that is known. Of long lines there is a part;
// what turns the direction of writing shows as an escape. Nothing when the file cannot be read or has no such line.
// Lines and columns count from 1.
std::string source_excerpt(const std::string& physical, LONG line, LONG column, const SourceReading& reading = {});

}  // namespace zelto
