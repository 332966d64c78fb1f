// The files that a new site begins with. They stand in new_site/; the build makes C++ of them.
#pragma once

#include <span>
#include <string_view>

namespace zelto {

struct NewFile {
  std::string_view path;  // in the site's folder
  std::string_view text;
};

std::span<const NewFile> new_site_files();

}  // namespace zelto
