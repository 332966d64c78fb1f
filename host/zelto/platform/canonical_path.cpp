#include "platform/canonical_path.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <filesystem>
#include <system_error>
#include <unordered_map>

#include <korlib_host/file_look.h>

#include "base/file_descriptor.h"
#include "base/file_stamp.h"
#include "base/path_text.h"

namespace zelto {

namespace {

constexpr int kMostLinks = 40;
constexpr std::size_t kMostRemembered = 16;  // paths of a request

thread_local PathMemory* t_memory = nullptr;

// Whether all of the path exists and no part of it is a symbolic link: asked of the system in one call, where it has
// that, instead of one for each part. The file is `*about`.
bool look_for_links(const std::string& path, struct stat* about) {
  open_how how{};
  how.flags = O_PATH | O_CLOEXEC;
  how.resolve = RESOLVE_NO_SYMLINKS;
  const base::FileDescriptor found(static_cast<int>(::syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how)));
  return found && ::fstat(found.get(), about) == 0;
}

// The same of a name in a folder that is known to be free of them.
bool look_at_last_name(const std::string& path, struct stat* about) {
  return ::lstat(path.c_str(), about) == 0 && !S_ISLNK(about->st_mode);
}

// The files that the thread has found free of links within the last second. One that the path still leads to, and that
// nobody has renamed or changed, needs no more than a look at it.
class KnownFiles {
 public:
  bool is_free_of_links(const std::string& path, struct stat* about) {
    const auto now = Clock::now();
    if (const auto known = files_.find(path); known != files_.end()) {
      const auto& [stamp, found_at] = known->second;
      const bool is_same =
          now - found_at < kBelieved && ::stat(path.c_str(), about) == 0 && base::FileStamp::of(*about) == stamp;
      if (is_same) return true;
      files_.erase(known);
    }
    if (!look_for_links(path, about)) return false;
    if (files_.size() >= kMost) files_.clear();
    const auto stamp = base::FileStamp::of(*about);
    if (S_ISREG(about->st_mode) && stamp.is_settled()) files_.emplace(path, File{stamp, now});
    return true;
  }

 private:
  using Clock = std::chrono::steady_clock;
  struct File {
    base::FileStamp stamp;
    Clock::time_point found_at;
  };
  static constexpr std::chrono::seconds kBelieved{1};
  static constexpr std::size_t kMost = 64;

  std::unordered_map<std::string, File> files_;
};
thread_local KnownFiles t_known;

bool is_free_of_links(const std::string& path) {
  PathMemory* const memory = PathMemory::of_this_thread();
  struct stat about {};
  if (!memory) return look_for_links(path, &about);
  if (memory->has(path)) return true;
  const std::string_view folder = std::string_view(path).substr(0, path.rfind('/'));
  const bool is_free = memory->has(folder) ? look_at_last_name(path, &about) : t_known.is_free_of_links(path, &about);
  if (!is_free) return false;
  memory->add(path);
  korlib_host::leave_look(path, about);
  return true;
}

// Whether reading a symbolic link failed because none is there: a file of another kind, or nothing at all.
bool is_no_link(int error) { return error == EINVAL || error == ENOENT || error == ENOTDIR; }

// The target of a link; empty where the path is none. Nothing when that cannot be told.
std::optional<std::string_view> read_link(const std::string& path, std::array<char, PATH_MAX>& target) {
  const ssize_t size = ::readlink(path.c_str(), target.data(), target.size());
  if (size < 0) return is_no_link(errno) ? std::optional(std::string_view()) : std::nullopt;
  if (static_cast<std::size_t>(size) == target.size()) return std::nullopt;  // cut off
  return std::string_view(target.data(), static_cast<std::size_t>(size));
}

}  // namespace

PathMemory::PathMemory() : outer_(t_memory) { t_memory = this; }

PathMemory::~PathMemory() {
  korlib_host::forget_look();
  t_memory = outer_;
}

PathMemory* PathMemory::of_this_thread() { return t_memory; }

bool PathMemory::has(std::string_view path) const {
  return !path.empty() && std::ranges::any_of(paths_, [path](std::string_view known) {
    return known.starts_with(path) && (known.size() == path.size() || path.back() == '/' || known[path.size()] == '/');
  });
}

void PathMemory::add(const std::string& path) {
  if (paths_.size() < kMostRemembered) paths_.push_back(path);
}

std::optional<std::string> canonical_path(std::string_view path) {
  if (path.empty() || path.size() >= PATH_MAX || path.find('\0') != std::string_view::npos) return std::nullopt;
  std::string ahead;
  if (path.front() != '/') {
    std::error_code error;
    ahead = std::filesystem::current_path(error).native() + "/";
    if (error) return std::nullopt;
  }
  ahead += path;
  const bool has_links = !is_free_of_links(ahead);
  std::array<char, PATH_MAX> target;
  std::string walked;
  walked.reserve(ahead.size());
  int links = 0;
  std::size_t at = 0;
  for (std::string_view segment; !(segment = base::next_segment(ahead, &at)).empty();) {
    if (segment == ".") continue;
    const std::size_t parent = walked.size();
    if (segment == "..") {
      walked.resize(walked.empty() ? 0 : walked.rfind('/'));
      continue;
    }
    walked.append("/").append(segment);
    if (!has_links) continue;
    const auto link = read_link(walked, target);
    if (!link) return std::nullopt;
    if (link->empty()) continue;
    if (++links > kMostLinks) return std::nullopt;
    walked.resize(link->starts_with('/') ? 0 : parent);
    ahead = std::string(*link).append(ahead, at);  // after the name there is a slash or nothing
    at = 0;
  }
  return walked.empty() ? "/" : walked;
}

}  // namespace zelto
