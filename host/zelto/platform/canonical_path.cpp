#include "platform/canonical_path.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <deque>
#include <ranges>

#include "text/charset.h"
#include "text/path_segments.h"

namespace zelto {

namespace {

constexpr int kMostLinks = 40;

// Puts the segments of `path` in front of those that are still to be walked.
void push_segments(std::deque<std::string>& ahead, std::string_view path) {
  for (const std::string_view segment : path_segments(path) | std::views::reverse) ahead.emplace_front(segment);
}

std::optional<std::string> current_folder() {
  std::string buffer(PATH_MAX, '\0');
  if (!getcwd(buffer.data(), buffer.size())) return std::nullopt;
  buffer.resize(buffer.find('\0'));
  return buffer;
}

enum class Link { none, followed, failed };

Link read_link(const std::string& path, std::string& target) {
  target.assign(PATH_MAX, '\0');
  const ssize_t length = readlink(path.c_str(), target.data(), target.size());
  if (length >= 0) {
    target.resize(static_cast<std::size_t>(length));
    return Link::followed;
  }
  // EINVAL: it is there and no link.
  return errno == EINVAL || errno == ENOENT || errno == ENOTDIR ? Link::none : Link::failed;
}

}  // namespace

std::string native_path(std::wstring_view path) {
  std::string text = to_utf8(path);
  std::ranges::replace(text, '\\', '/');
  return text;
}

std::optional<std::string> canonical_path(std::string_view path) {
  if (path.empty() || path.size() >= PATH_MAX || path.find('\0') != std::string_view::npos) return std::nullopt;
  std::deque<std::string> ahead;
  push_segments(ahead, path);
  if (path.front() != '/') {
    const auto folder = current_folder();
    if (!folder) return std::nullopt;
    push_segments(ahead, *folder);
  }
  std::string walked;
  std::string target;
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
    const Link link = read_link(next, target);
    if (link == Link::failed || (link == Link::followed && ++links > kMostLinks)) return std::nullopt;
    if (link == Link::none) {
      walked = std::move(next);
      continue;
    }
    push_segments(ahead, target);
    if (target.starts_with('/')) walked.clear();
  }
  return walked.empty() ? "/" : walked;
}

}  // namespace zelto
