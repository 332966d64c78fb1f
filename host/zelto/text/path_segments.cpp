#include "text/path_segments.h"

#include <algorithm>

namespace zelto {

std::vector<std::string_view> path_segments(std::string_view path) {
  std::vector<std::string_view> segments;
  while (!path.empty()) {
    const std::string_view segment = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(segment.size() + 1, path.size()));
    if (!segment.empty()) segments.push_back(segment);
  }
  return segments;
}

std::optional<std::string> resolve_dots(std::string_view path) {
  std::vector<std::string_view> kept;
  for (const std::string_view segment : path_segments(path)) {
    if (segment == ".") continue;
    if (segment != "..") {
      kept.push_back(segment);
    } else if (kept.empty()) {
      return std::nullopt;
    } else {
      kept.pop_back();
    }
  }
  std::string resolved;
  for (const std::string_view segment : kept) resolved.append("/").append(segment);
  return resolved;
}

std::optional<std::string> resolve_virtual_path(std::string_view path, std::string_view page) {
  std::string whole(path);
  if (whole.find('\0') != std::string::npos) return std::nullopt;
  std::ranges::replace(whole, '\\', '/');
  if (!whole.starts_with('/')) whole.insert(0, page.substr(0, page.rfind('/') + 1));
  auto resolved = resolve_dots(whole);
  if (resolved && (resolved->empty() || whole.ends_with('/'))) *resolved += '/';
  return resolved;
}

}  // namespace zelto
