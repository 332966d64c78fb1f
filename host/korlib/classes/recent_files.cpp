#include "classes/recent_files.h"

#include <sys/stat.h>

#include <new>
#include <optional>
#include <utility>

#include <korlib_host/file_look.h>

namespace korlib {
namespace {

constexpr std::size_t kLargest = std::size_t{16} << 10;
constexpr std::size_t kMost = 512;  // files, which take 8 MiB at most

}  // namespace

RecentFiles& RecentFiles::instance() {
  static auto* const all = new RecentFiles;
  return *all;
}

RecentFiles::Contents RecentFiles::find(const std::string& path) {
  File file;
  {
    const std::lock_guard guard(lock_);
    const auto found = files_.find(path);
    if (found == files_.end()) return nullptr;
    file = found->second;
  }
  std::optional<struct stat> now = korlib_host::take_look(path, korlib_host::LookFor::contents);
  if (!now && stat(path.c_str(), &now.emplace()) != 0) return nullptr;
  return base::FileStamp::of(*now) == file.stamp ? file.contents : nullptr;
}

void RecentFiles::keep(const std::string& path, const base::FileStamp& stamp, std::string_view bytes) {
  if (bytes.size() > kLargest || bytes.size() != static_cast<std::size_t>(stamp.size)) return;
  try {
    auto contents = std::make_shared<const std::string>(bytes);
    const std::lock_guard guard(lock_);
    if (files_.size() >= kMost && !files_.contains(path)) files_.clear();
    files_[path] = {stamp, std::move(contents)};
  } catch (const std::bad_alloc&) {
    return;  // it is read again
  }
}

}  // namespace korlib
