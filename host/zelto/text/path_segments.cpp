#include "text/path_segments.h"

#include "base/path_text.h"

namespace zelto {

std::vector<std::string_view> path_segments(std::string_view path) {
  std::vector<std::string_view> segments;
  std::size_t at = 0;
  for (std::string_view segment; !(segment = base::next_segment(path, &at)).empty();) segments.push_back(segment);
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
  if (path.find('\0') != std::string_view::npos) return std::nullopt;
  std::string whole = base::with_slashes(std::string(path));
  if (!whole.starts_with('/')) whole.insert(0, page.substr(0, page.rfind('/') + 1));
  auto resolved = resolve_dots(whole);
  if (resolved && (resolved->empty() || whole.ends_with('/'))) *resolved += '/';
  return resolved;
}

}  // namespace zelto
