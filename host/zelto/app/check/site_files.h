// The files of a site that a check looks at.
#pragma once

#include <string>
#include <vector>

#include "site/protected_names.h"

namespace zelto::check {

struct SiteFiles {
  std::vector<std::string> pages;      // that a client may ask for
  std::vector<std::string> documents;  // HTML files, likewise
  std::vector<std::string> folders;    // all of them, the site's own first

  // Physical paths, in order. `root` is the site's folder, canonical. Folders whose name begins with a dot and those of
  // package managers are passed over, as are links: what a link leads to is found under its own name, or is not the
  // site's.
  static SiteFiles of(const std::string& root, const ProtectedNames& protected_names,
                      const std::string& page_extension);
};

// The regular files of a folder, by their physical paths, in order.
std::vector<std::string> files_in(const std::string& folder);

}  // namespace zelto::check
