// The file that an include, or a <script runat="server" src="…">, names.
#pragma once

#include <optional>
#include <string>

#include "pages/page_scanner.h"

namespace zelto::pages {

// A file as the page names it and what it is behind symbolic links.
struct FileName {
  std::string named;
  std::string canonical;
};

// `root` is the site's folder and `includer` the file that holds the piece, both canonical. Throws std::string, a
// sentence, when there is no such file in the site.
FileName find_include(const std::string& root, const std::string& includer, const Piece& piece);

// The path below `root` of what the path names when letter case does not count; nothing when there is nothing.
std::optional<std::string> path_in_other_case(const std::string& root, const std::string& path);

}  // namespace zelto::pages
