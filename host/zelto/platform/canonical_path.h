// The one true name of a file, whether it exists or not.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zelto {

// An absolute path without ".", "..", repeated slashes or symbolic links. Of what does not exist the text
// is cleaned the same way; whatever does exist along the way is followed, so two paths with a common
// beginning really lie in one folder. Nothing when links go round in a circle, a folder may not be looked
// into, or the text holds a NUL.
std::optional<std::string> canonical_path(std::string_view path);

// While one lives, as long as a request, its thread need not look again at what canonical_path() has found to be free
// of links: a page asks for the folder of its templates with each of them. The last one that was made counts.
class PathMemory {
 public:
  PathMemory();
  ~PathMemory();
  PathMemory(const PathMemory&) = delete;
  PathMemory& operator=(const PathMemory&) = delete;

  static PathMemory* of_this_thread();  // null where there is none

  // Whether the path is one that was found, or a folder on the way to one.
  bool has(std::string_view path) const;
  void add(const std::string& path);

 private:
  PathMemory* const outer_;
  std::vector<std::string> paths_;
};

}  // namespace zelto
