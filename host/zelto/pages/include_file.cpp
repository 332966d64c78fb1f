#include "pages/include_file.h"

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>

#include "base/letter_case.h"
#include "base/path_text.h"
#include "text/charset.h"
#include "text/path_segments.h"

namespace zelto::pages {

namespace {

namespace fs = std::filesystem;

// More of them are no name that somebody has mistyped.
constexpr std::size_t kLongestPath = PATH_MAX;

std::optional<std::string> entry_like(const std::string& folder, std::string_view name) {
  const std::wstring wanted = to_wide(name);
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    std::string found = entry->path().filename().string();
    if (base::equal_folded(to_wide(found), wanted)) return found;
  }
  return std::nullopt;
}

// The path below `root` of what the path names when letter case does not count; nothing when there is nothing.
std::optional<std::string> path_in_other_case(const std::string& root, const std::string& path) {
  if (path.size() > kLongestPath || !path.starts_with(root + "/")) return std::nullopt;
  const auto resolved = resolve_dots(std::string_view(path).substr(root.size()));
  if (!resolved) return std::nullopt;
  std::string found;
  std::error_code error;
  for (const std::string_view name : path_segments(*resolved)) {
    const std::string folder = root + found + "/";
    if (fs::exists(folder + std::string(name), error)) {
      found.append("/").append(name);
      continue;
    }
    const auto entry = entry_like(folder, name);
    if (!entry) return std::nullopt;
    found += "/" + *entry;
  }
  return found;
}

}  // namespace

std::string end_of_missing(const std::string& root, const std::string& path) {
  const auto other = path_in_other_case(root, path);
  return other ? "; in other letter case there is \"" + *other + "\"." : ".";
}

FileName find_include(const std::string& root, const std::string& includer, const Piece& piece) {
  const std::string name = base::with_slashes(to_utf8(piece.text));
  if (name.find('\0') != std::string::npos) throw std::string("The name of an include file holds a zero character.");
  if (piece.is_virtual && !name.starts_with('/')) throw "A virtual include begins with \"/\": \"" + name + "\".";
  const std::string path = (piece.is_virtual ? root : includer.substr(0, includer.rfind('/')) + "/") + name;
  char found[PATH_MAX];
  if (!::realpath(path.c_str(), found)) {
    throw "The include file \"" + name + "\" was not found" + end_of_missing(root, path);
  }
  if (!std::string_view(found).starts_with(root + "/")) {
    throw "The include file \"" + name + "\" lies outside the site.";
  }
  return {path, found};
}

}  // namespace zelto::pages
