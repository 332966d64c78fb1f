// Paths as text; nothing here looks at files.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace base {

// The path with a slash for every backslash, which paths have in pages that were written for other systems.
inline std::string with_slashes(std::string path) {
  std::ranges::replace(path, '\\', '/');
  return path;
}

// The next name of the path from *at on, which goes past it; empty at the end. Repeated slashes count as one, and "."
// and ".." as names.
inline std::string_view next_segment(std::string_view path, std::size_t* at) {
  const std::size_t start = std::min(path.find_first_not_of('/', *at), path.size());
  *at = std::min(path.find('/', start), path.size());
  return path.substr(start, *at - start);
}

}  // namespace base
