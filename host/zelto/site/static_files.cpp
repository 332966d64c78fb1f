#include "site/static_files.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <system_error>
#include <utility>

#include "base/file_stamp.h"
#include "base/letter_case.h"
#include "http/status.h"
#include "http/target.h"
#include "site/file_answer.h"
#include "text/path_segments.h"

namespace zelto {

namespace {

std::string path_of(int descriptor) {
  std::array<char, PATH_MAX> path{};
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
  return {path.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
}

// So that, where few may be open, most are left to clients and pages.
std::size_t files_to_keep(std::size_t wanted) {
  rlimit files{};
  return ::getrlimit(RLIMIT_NOFILE, &files) == 0 ? std::min<rlim_t>(wanted, files.rlim_cur / 16) : wanted;
}

// From here on opening the file is cheaper than looking at every folder on the way.
constexpr std::ptrdiff_t kMostLooks = 3;

// The same file, and nothing has been written to it or changed about who may read it. As long as one is open, no other
// file gets its number.
bool is_unchanged(const struct stat& then, const struct stat& now) {
  return base::FileStamp::of(then) == base::FileStamp::of(now) && then.st_mode == now.st_mode &&
         then.st_uid == now.st_uid && then.st_gid == now.st_gid;
}

}  // namespace

StaticFiles::StaticFiles(StaticOptions options)
    : options_(std::move(options)),
      root_(::open(options_.root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)),
      open_files_(files_to_keep(options_.open_files)) {
  if (!root_) throw std::system_error(errno, std::generic_category(), "opening the site " + options_.root);
  options_.root = path_of(root_.get());
}

base::FileDescriptor StaticFiles::open_beneath(const std::string& relative, int flags, std::uint64_t resolve) const {
  const auto has_failed = [](const base::FileDescriptor& file) {
    return !file && (errno == EMFILE || errno == ENFILE);
  };
  base::FileDescriptor file = try_open(relative, flags, resolve);
  if (!has_failed(file)) return file;
  open_files_.close_all();
  file = try_open(relative, flags, resolve);
  if (has_failed(file)) throw std::system_error(errno, std::generic_category(), "opening " + relative.substr(1));
  return file;
}

base::FileDescriptor StaticFiles::try_open(const std::string& relative, int flags, std::uint64_t resolve) const {
  open_how how{};
  // Opened to be read without blocking: a name may be a pipe that nobody writes to.
  flags |= O_CLOEXEC | (flags == O_PATH ? 0 : O_NONBLOCK);
  how.flags = static_cast<std::uint64_t>(flags);
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS | resolve;
  const long opened = ::syscall(SYS_openat2, root_.get(), relative.c_str(), &how, sizeof how);
  if (opened >= 0 || (errno != ENOSYS && errno != EPERM)) return base::FileDescriptor(static_cast<int>(opened));
  // An old kernel, or a sandbox that does not know the call: open first, then look where that went.
  base::FileDescriptor file(::openat(root_.get(), relative.c_str(), flags));
  const std::string path = path_of(file.get());
  if (path != options_.root && !path.starts_with(options_.root + "/")) return {};
  if ((resolve & RESOLVE_NO_SYMLINKS) &&
      path + (relative.ends_with('/') ? "/" : "") != options_.root + relative.substr(1)) {
    file = {};
    errno = ELOOP;
  }
  return file;
}

// What the path names, when there is no link on the way.
std::optional<struct stat> StaticFiles::look(std::string_view path) const {
  struct stat about {};
  if (std::ranges::count(path, '/') > kMostLooks) {
    const base::FileDescriptor file = open_beneath("." + std::string(path), O_PATH, RESOLVE_NO_SYMLINKS);
    return file && ::fstat(file.get(), &about) == 0 ? std::optional(about) : std::nullopt;
  }
  std::string name(path.substr(1));
  for (auto slash = name.find('/'); slash != std::string::npos; slash = name.find('/', slash + 1)) {
    name[slash] = '\0';
    if (::fstatat(root_.get(), name.c_str(), &about, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISDIR(about.st_mode)) return {};
    name[slash] = '/';
  }
  // The root's own name is empty.
  const int looked = ::fstatat(root_.get(), name.c_str(), &about, AT_SYMLINK_NOFOLLOW | AT_EMPTY_PATH);
  return looked == 0 ? std::optional(about) : std::nullopt;
}

// What was found under that path before, as a file that is not protected and not reached through a link, and is still
// that very file.
FoundFile StaticFiles::find_open(std::string_view path) const {
  auto file = open_files_.find(path);
  if (!file) return {};
  const auto now = look(path);
  if (!now || !is_unchanged(file->about, *now)) {
    open_files_.forget(path);
    return {};
  }
  return {FoundFile::Kind::file, std::string(path), options_.root + std::string(path), false, std::move(file)};
}

FoundFile StaticFiles::find(std::string_view path) const {
  if (FoundFile open = find_open(path); open.open) return open;
  if (const auto name = options_.protected_names.find_in(path); !name.empty())
    return {FoundFile::Kind::protected_name, std::string(name), {}};
  // Mostly a page, which is not opened here, or a folder with one.
  const auto seen = look(path);
  if (seen && (S_ISREG(seen->st_mode) || S_ISDIR(seen->st_mode))) return found(path, path, *seen);
  const base::FileDescriptor file = open_beneath("." + std::string(path), O_PATH, RESOLVE_NO_SYMLINKS);
  if (!file && errno == ELOOP) return find_linked(path);
  struct stat about {};
  return file && ::fstat(file.get(), &about) == 0 ? found(path, path, about) : FoundFile();
}

// A link with a harmless name must not open what its own name protects.
FoundFile StaticFiles::find_linked(std::string_view path) const {
  const base::FileDescriptor file = open_beneath("." + std::string(path), O_PATH);
  const std::string real = path_of(file.get());
  if (!file || !real.starts_with(options_.root + "/")) return {};
  const std::string_view own = std::string_view(real).substr(options_.root.size());
  if (const auto name = options_.protected_names.find_in(own); !name.empty())
    return {FoundFile::Kind::protected_name, std::string(name), {}};
  struct stat about {};
  return ::fstat(file.get(), &about) == 0 ? found(path, own, about) : FoundFile();
}

// `real` is the path without links. A link to a page that is not called one is the page that it leads to.
FoundFile StaticFiles::found(std::string_view path, std::string_view real, const struct stat& about) const {
  const bool is_folder = path.ends_with('/');
  if (S_ISDIR(about.st_mode)) {
    if (!is_folder) return {FoundFile::Kind::redirect, std::string(path) + "/", {}};
    for (const std::string& name : options_.default_documents) {
      FoundFile inside = find(std::string(path) + name);
      if (inside.kind == FoundFile::Kind::page || inside.kind == FoundFile::Kind::file) return inside;
    }
    return {};
  }
  if (!S_ISREG(about.st_mode) || is_folder) return {};
  const auto is_page = [&](std::string_view name) {
    return base::equal_ascii(extension_of(name), options_.page_extension);
  };
  const bool leads_to_page = is_page(real);
  if (leads_to_page && !is_page(path)) path = real;
  const auto kind = leads_to_page || is_page(path) ? FoundFile::Kind::page : FoundFile::Kind::file;
  const bool is_unknown = content_type_of(path) == kUnknownType || content_type_of(real) == kUnknownType;
  const bool is_refused = options_.refuses_unknown_types && is_unknown && !path.starts_with("/.well-known/");
  if (kind == FoundFile::Kind::file && is_refused) return {};
  FoundFile found{kind, std::string(path), options_.root + std::string(path), path != real};
  if (kind == FoundFile::Kind::page) found.stamp = base::FileStamp::of(about);
  return found;
}

void StaticFiles::serve(const HttpRequest& request, const FoundFile& found, ResponseSink& sink) const {
  if (found.kind == FoundFile::Kind::redirect) {
    const std::string query = request.query.empty() ? std::string() : "?" + request.query;
    return serve_status(sink, status::kMovedPermanently, {}, {{"Location", encode_path(found.path) + query}});
  }
  if (found.kind != FoundFile::Kind::file) return serve_status(sink, status::kNotFound);
  if (request.method != "GET" && request.method != "HEAD")
    return serve_status(sink, status::kMethodNotAllowed, {}, {{"Allow", "GET, HEAD"}});
  if (found.open) return send_file(request, found.open, sink);
  const auto file = describe_file(found.path, open_beneath("." + found.path, O_RDONLY));
  if (file && !found.is_linked) open_files_.keep(found.path, file);
  send_file(request, file, sink);
}

}  // namespace zelto
