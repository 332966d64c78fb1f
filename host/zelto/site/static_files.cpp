#include "site/static_files.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <system_error>
#include <utility>

#include "base/letter_case.h"
#include "http/response_head.h"
#include "http/target.h"
#include "site/byte_range.h"
#include "site/content_types.h"
#include "text/http_date.h"
#include "text/http_grammar.h"

namespace zelto {

namespace {

constexpr int kPartialContent = 206;
constexpr int kMovedPermanently = 301;
constexpr int kNotModified = 304;
constexpr int kNotFound = 404;
constexpr int kMethodNotAllowed = 405;
constexpr int kTooLarge = 413;
constexpr int kNotSatisfiable = 416;

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return number_; }
  int release() { return std::exchange(number_, -1); }

 private:
  int number_;
};

std::string path_of(int descriptor) {
  std::array<char, PATH_MAX> path{};
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
  return {path.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
}

// Changes whenever the file does, as far as its time and size tell.
std::string entity_tag(const struct stat& file) {
  std::array<char, 64> text{};
  const auto nanoseconds = static_cast<unsigned long long>(file.st_mtim.tv_sec) * 1'000'000'000ULL +
                           static_cast<unsigned long long>(file.st_mtim.tv_nsec);
  const int length = std::snprintf(text.data(), text.size(), "\"%llx-%llx\"", nanoseconds,
                                   static_cast<unsigned long long>(file.st_size));
  return {text.data(), static_cast<std::size_t>(std::max(length, 0))};
}

bool is_unmodified(const HttpRequest& request, const std::string& tag, std::time_t modified) {
  if (const std::string* tags = request.header("If-None-Match")) {
    bool matched = false;
    for_each_element(*tags, [&](std::string_view one) {
      if (one.starts_with("W/")) one.remove_prefix(2);
      matched |= one == tag || one == "*";
    });
    return matched;
  }
  const std::string* since = request.header("If-Modified-Since");
  const auto date = since ? parse_http_date(*since) : std::nullopt;
  return date && modified <= *date;
}

std::optional<ByteRange> wanted_range(const HttpRequest& request, const std::string& tag, const std::string& date,
                                      std::uint64_t size) {
  const std::string* range = request.header("Range");
  if (!range || request.method != "GET") return std::nullopt;
  const std::string* condition = request.header("If-Range");
  if (condition && *condition != tag && *condition != date) return std::nullopt;
  return parse_range(*range, size);
}

}  // namespace

StaticFiles::StaticFiles(StaticOptions options) : options_(std::move(options)) {
  root_ = ::open(options_.root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (root_ < 0) throw std::system_error(errno, std::generic_category(), "opening the site " + options_.root);
  options_.root = path_of(root_);
}

StaticFiles::~StaticFiles() { ::close(root_); }

int StaticFiles::open_beneath(const std::string& relative, int flags) const {
  open_how how{};
  // Opened to be read without blocking: a name may be a pipe that nobody writes to.
  flags |= O_CLOEXEC | (flags == O_PATH ? 0 : O_NONBLOCK);
  how.flags = static_cast<std::uint64_t>(flags);
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
  const long opened = ::syscall(SYS_openat2, root_, relative.c_str(), &how, sizeof how);
  if (opened >= 0 || (errno != ENOSYS && errno != EPERM)) return static_cast<int>(opened);
  // An old kernel, or a sandbox that does not know the call: open first, then look where that went.
  Descriptor file(::openat(root_, relative.c_str(), flags));
  const std::string path = path_of(file.get());
  return path == options_.root || path.starts_with(options_.root + "/") ? file.release() : -1;
}

FoundFile StaticFiles::find(std::string_view path) const {
  const bool is_folder = path.ends_with('/');
  if (const auto name = options_.protected_names.find_in(path); !name.empty())
    return {FoundFile::Kind::kProtected, std::string(name), {}};
  const std::string relative = "." + std::string(path);
  const Descriptor file(open_beneath(relative, O_PATH));
  struct stat status {};
  if (file.get() < 0 || ::fstat(file.get(), &status) != 0) return {};
  if (S_ISDIR(status.st_mode)) {
    if (!is_folder) return {FoundFile::Kind::kRedirect, std::string(path) + "/", {}};
    for (const std::string& name : options_.default_documents) {
      FoundFile found = find(std::string(path) + name);
      if (found.kind == FoundFile::Kind::kPage || found.kind == FoundFile::Kind::kFile) return found;
    }
    return {};
  }
  if (!S_ISREG(status.st_mode) || is_folder) return {};
  const bool is_page = base::equal_ascii(extension_of(path), options_.page_extension);
  return {is_page ? FoundFile::Kind::kPage : FoundFile::Kind::kFile, std::string(path),
          options_.root + std::string(path)};
}

void StaticFiles::serve(const HttpRequest& request, const FoundFile& found, ResponseSink& sink) const {
  if (request.body_too_large) return serve_status(sink, kTooLarge, {});
  if (found.kind == FoundFile::Kind::kRedirect) {
    const std::string query = request.query.empty() ? std::string() : "?" + request.query;
    return serve_status(sink, kMovedPermanently, {}, {{"Location", encode_path(found.path) + query}});
  }
  if (found.kind != FoundFile::Kind::kFile) return serve_status(sink, kNotFound, {});
  if (request.method != "GET" && request.method != "HEAD")
    return serve_status(sink, kMethodNotAllowed, {}, {{"Allow", "GET, HEAD"}});
  Descriptor file(open_beneath("." + found.path, O_RDONLY));
  struct stat status {};
  if (file.get() < 0 || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
    return serve_status(sink, kNotFound, {});

  const auto size = static_cast<std::uint64_t>(status.st_size);
  const std::string tag = entity_tag(status);
  const std::string modified = http_date(status.st_mtim.tv_sec);
  ResponseHead head;
  head.headers = {{"ETag", tag}, {"Last-Modified", modified}, {"Cache-Control", "no-cache"}};
  if (is_unmodified(request, tag, status.st_mtim.tv_sec)) {
    head.status = kNotModified;
    head.reason = reason_of(kNotModified);
    sink.start(std::move(head), 0);
    return sink.finish();
  }
  ByteRange range{true, 0, size};
  if (const auto wanted = wanted_range(request, tag, modified, size)) {
    const std::string total = "/" + std::to_string(size);
    if (!wanted->satisfiable) return serve_status(sink, kNotSatisfiable, {}, {{"Content-Range", "bytes *" + total}});
    range = *wanted;
    head.status = kPartialContent;
    head.headers.push_back({"Content-Range", "bytes " + std::to_string(range.first) + "-" +
                                                 std::to_string(range.first + range.length - 1) + total});
  }
  head.reason = reason_of(head.status);
  head.headers.push_back({"Content-Type", std::string(content_type_of(found.path))});
  head.headers.push_back({"Accept-Ranges", "bytes"});
  sink.start(std::move(head), range.length);
  sink.write_file(file.release(), range.first, range.length);
  sink.finish();
}

void serve_status(ResponseSink& sink, int status, std::string_view text, std::vector<Header> headers) {
  ResponseHead head;
  head.status = status;
  head.reason = reason_of(status);
  head.headers = std::move(headers);
  head.headers.push_back({"Content-Type", "text/html; charset=utf-8"});
  const std::string title = std::to_string(status) + " " + head.reason;
  std::string body = "<!DOCTYPE html>\n<html lang=\"en\"><head><title>" + title + "</title></head>\n<body><h1>" +
                     title + "</h1>" + (text.empty() ? std::string() : "<p>" + std::string(text) + "</p>") +
                     "</body></html>\n";
  sink.start(std::move(head), body.size());
  sink.write(body);
  sink.finish();
}

}  // namespace zelto
