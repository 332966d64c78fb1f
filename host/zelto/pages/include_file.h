// The file that an include, or a <script runat="server" src="…">, names.
#pragma once

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

// How a sentence ends that says that nothing is at the path: "." or, where letter case alone differs, "; in other
// letter case there is "/inc/Menu.inc"."
std::string end_of_missing(const std::string& root, const std::string& path);

}  // namespace zelto::pages
