#include "platform/canonical_path.h"

#include <climits>
#include <deque>
#include <filesystem>
#include <system_error>

#include "text/path_segments.h"

namespace zelto {

namespace {

constexpr int kMostLinks = 40;

// Puts the segments of `path` in front of those that are still to be walked.
void push_segments(std::deque<std::string>& ahead, std::string_view path) {
  const auto segments = path_segments(path);
  ahead.insert(ahead.begin(), segments.begin(), segments.end());
}

// Whether reading a symbolic link failed because none is there: a file of another kind, or nothing at all.
bool is_no_link(const std::error_code& error) {
  return error == std::errc::invalid_argument || error == std::errc::no_such_file_or_directory ||
         error == std::errc::not_a_directory;
}

}  // namespace

std::optional<std::string> canonical_path(std::string_view path) {
  if (path.empty() || path.size() >= PATH_MAX || path.find('\0') != std::string_view::npos) return std::nullopt;
  std::deque<std::string> ahead;
  push_segments(ahead, path);
  std::error_code error;
  if (path.front() != '/') {
    push_segments(ahead, std::filesystem::current_path(error).native());
    if (error) return std::nullopt;
  }
  std::string walked;
  int links = 0;
  while (!ahead.empty()) {
    const std::string segment = std::move(ahead.front());
    ahead.pop_front();
    if (segment == ".") continue;
    if (segment == "..") {
      walked.resize(walked.empty() ? 0 : walked.rfind('/'));
      continue;
    }
    std::string next = walked;
    next.append("/").append(segment);
    const std::string target = std::filesystem::read_symlink(next, error);
    if (is_no_link(error)) {
      walked = std::move(next);
      continue;
    }
    if (error || ++links > kMostLinks) return std::nullopt;
    push_segments(ahead, target);
    if (target.starts_with('/')) walked.clear();
  }
  return walked.empty() ? "/" : walked;
}

}  // namespace zelto
