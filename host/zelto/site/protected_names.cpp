#include "site/protected_names.h"

#include <algorithm>

#include "base/ascii.h"
#include "base/letter_case.h"
#include "text/path_segments.h"

namespace zelto {

namespace {

bool contains(const std::vector<std::string>& names, std::string_view name) {
  return std::ranges::any_of(names, [&](const std::string& one) { return base::equal_ascii(one, name); });
}

}  // namespace

bool ProtectedNames::add(std::string_view name) {
  const bool is_folder = name.ends_with('/');
  const bool is_extension = !is_folder && name.starts_with("*.");
  if (is_folder) name.remove_suffix(1);
  if (is_extension) name.remove_prefix(1);
  if (name.empty() || name == "." || name.find_first_of("*/") != std::string_view::npos) return false;
  (is_folder ? folders_ : is_extension ? extensions_ : files_).emplace_back(name);
  return true;
}

bool ProtectedNames::covers_extension(std::string_view extension) const {
  return contains(extensions_, extension) || contains(extensions_, extension.substr(0, extension.find('-')));
}

// Whether what stands in front of the last extension is the name of a source or of a protected file. That it is written
// in front of one of the site's own, as in "app.config.js", tells nothing.
bool ProtectedNames::is_copy(std::string_view name) const {
  constexpr std::string_view kSources[] = {".asp", ".asa", ".inc"};
  const auto goes_on_after = [name](std::size_t end) { return end < name.size() && !base::is_letter(name[end]); };
  for (std::size_t dot = name.find('.'); dot != name.npos; dot = name.find('.', dot + 1)) {
    for (const std::string_view source : kSources)
      if (base::equal_ascii(name.substr(dot, source.size()), source) && goes_on_after(dot + source.size())) return true;
  }
  return std::ranges::any_of(files_, [&](const std::string& file) {
    return base::equal_ascii(name.substr(0, file.size()), file) && goes_on_after(file.size());
  });
}

bool ProtectedNames::covers(std::string_view name, bool last, bool well_known) const {
  if (name.starts_with('.') || name.ends_with('~')) return true;
  if (name.size() > 1 && name.starts_with('#') && name.ends_with('#')) return true;
  if (name.starts_with('_') && !well_known) return true;
  if (contains(folders_, name)) return true;
  if (!last) return false;
  const std::string_view extension = extension_of(name);
  if (contains(files_, name) || covers_extension(extension) || is_copy(name)) return true;
  // "shop.db.2", "notes.bak1": a number after what is protected.
  const std::string_view unnumbered = name.substr(0, name.find_last_not_of("0123456789") + 1);
  return unnumbered.size() < name.size() &&
         covers_extension(extension_of(unnumbered.substr(0, unnumbered.size() - unnumbered.ends_with('.'))));
}

std::string_view ProtectedNames::find_in(std::string_view path) const {
  constexpr std::string_view kWellKnown = "/.well-known/";
  const bool well_known = path.starts_with(kWellKnown);
  if (well_known) path.remove_prefix(kWellKnown.size());
  const std::vector<std::string_view> names = path_segments(path);
  for (const std::string_view& name : names) {
    const bool last = &name == &names.back() && !path.ends_with('/');
    if (covers(name, last, well_known)) return name;
  }
  return {};
}

std::string ProtectedNames::list(std::size_t width) const {
  std::vector<std::string> names = files_;
  for (const std::string& folder : folders_) names.push_back(folder + "/");
  for (const std::string& extension : extensions_) names.push_back("*" + extension);
  std::string text;
  std::size_t column = 0;
  for (const std::string& name : names) {
    if (!text.empty()) text += column + name.size() + 2 > width ? ",\n" : ", ";
    if (text.ends_with('\n')) column = 0;
    text += name;
    column += name.size() + 2;
  }
  return text;
}

}  // namespace zelto
