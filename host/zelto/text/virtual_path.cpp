#include "text/virtual_path.h"

#include <algorithm>
#include <vector>

namespace zelto {

std::optional<std::string> resolve_virtual_path(std::string_view path, std::string_view page) {
  std::string whole(path);
  if (whole.find('\0') != std::string::npos) return std::nullopt;
  std::ranges::replace(whole, '\\', '/');
  if (!whole.starts_with('/')) whole.insert(0, page.substr(0, page.rfind('/') + 1));
  std::vector<std::string_view> segments;
  std::string_view rest = whole;
  while (!rest.empty()) {
    const std::size_t end = rest.find('/');
    const std::string_view segment = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (segment.empty() || segment == ".") continue;
    if (segment != "..") {
      segments.push_back(segment);
    } else if (segments.empty()) {
      return std::nullopt;
    } else {
      segments.pop_back();
    }
  }
  std::string resolved;
  for (const std::string_view segment : segments) resolved.append("/").append(segment);
  if (resolved.empty() || whole.ends_with('/')) resolved += '/';
  return resolved;
}

}  // namespace zelto
