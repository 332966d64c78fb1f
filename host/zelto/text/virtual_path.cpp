#include "text/virtual_path.h"

#include <algorithm>

#include "text/path_segments.h"

namespace zelto {

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
