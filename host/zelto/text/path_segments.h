// What a path consists of: names with slashes between them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zelto {

// The names in the path, in order, "." and ".." among them, but no empty ones. They are parts of `path`.
std::vector<std::string_view> path_segments(std::string_view path);

// The path without ".", and without each ".." and the name before it: "/a/b", empty for the root. Nothing when a ".."
// would leave the root.
std::optional<std::string> resolve_dots(std::string_view path);

// The path from the site's root that `path` names, as pages write paths: one without a leading slash is relative to
// the folder of `page`. Backslashes count as slashes; "." and ".." are resolved. Nothing when it leaves the root or
// holds a NUL.
std::optional<std::string> resolve_virtual_path(std::string_view path, std::string_view page);

// The extension of a file name with its dot, ".css"; empty when it has none.
constexpr std::string_view extension_of(std::string_view file_name) {
  const auto dot = file_name.rfind('.');
  return dot == std::string_view::npos ? std::string_view() : file_name.substr(dot);
}

}  // namespace zelto
