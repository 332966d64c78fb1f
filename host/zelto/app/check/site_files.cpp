#include "app/check/site_files.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "base/letter_case.h"
#include "text/path_segments.h"

namespace zelto::check {

namespace {

namespace fs = std::filesystem;

bool is_passed_over(const std::string& folder_name) {
  return folder_name.starts_with('.') || base::equal_ascii(folder_name, "node_modules");
}

bool is_html(std::string_view extension) {
  return base::equal_ascii(extension, ".html") || base::equal_ascii(extension, ".htm");
}

// What `is_wanted` is true of; a folder that cannot be read has nothing.
template <class IsWanted>
std::vector<std::string> names_in(const std::string& folder, IsWanted is_wanted) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    std::error_code unknown;
    if (is_wanted(entry->symlink_status(unknown))) names.push_back(entry->path().filename().string());
  }
  std::ranges::sort(names);
  return names;
}

}  // namespace

std::vector<std::string> files_in(const std::string& folder) {
  std::vector<std::string> files = names_in(folder, [](fs::file_status status) { return fs::is_regular_file(status); });
  for (std::string& name : files) name.insert(0, folder + "/");
  return files;
}

SiteFiles SiteFiles::of(const std::string& root, const ProtectedNames& protected_names,
                        const std::string& page_extension) {
  SiteFiles found;
  found.folders.push_back(root);
  for (std::size_t i = 0; i < found.folders.size(); ++i) {
    const std::string folder = found.folders[i];
    for (const std::string& name : names_in(folder, [](fs::file_status status) { return fs::is_directory(status); })) {
      if (!is_passed_over(name)) found.folders.push_back(folder + "/" + name);
    }
    for (const std::string& file : files_in(folder)) {
      const std::string_view extension = extension_of(std::string_view(file).substr(folder.size() + 1));
      const bool is_page = base::equal_ascii(extension, page_extension);
      if (!is_page && !is_html(extension)) continue;
      if (!protected_names.find_in(std::string_view(file).substr(root.size())).empty()) continue;
      (is_page ? found.pages : found.documents).push_back(file);
    }
  }
  return found;
}

}  // namespace zelto::check
