#include "site/file_answer.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <ctime>
#include <string>
#include <utility>
#include <vector>

#include "base/ascii.h"
#include "base/letter_case.h"
#include "http/response_head.h"
#include "http/status.h"
#include "text/http_date.h"
#include "text/http_grammar.h"
#include "text/path_segments.h"

namespace zelto {

namespace {

// Digits only; a number too large for us is as good as the largest.
std::optional<std::uint64_t> parse_position(std::string_view text) {
  if (text.empty() || !std::ranges::all_of(text, base::is_digit<char>)) return std::nullopt;
  std::uint64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() ? value : ~std::uint64_t{0};
}

// Changes whenever the file does, as far as its time and size tell.
std::string entity_tag(const struct stat& file) {
  const auto nanoseconds = static_cast<std::uint64_t>(file.st_mtim.tv_sec) * 1'000'000'000 +
                           static_cast<std::uint64_t>(file.st_mtim.tv_nsec);
  return fmt::format("\"{:x}-{:x}\"", nanoseconds, file.st_size);
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

std::optional<ByteRange> parse_range(std::string_view header, std::uint64_t size) {
  constexpr std::string_view kUnit = "bytes=";
  if (header.size() < kUnit.size() || !base::equal_ascii(header.substr(0, kUnit.size()), kUnit)) return std::nullopt;
  const std::string_view range = trim_blanks(header.substr(kUnit.size()));
  const auto dash = range.find('-');
  if (dash == std::string_view::npos || range.find(',') != std::string_view::npos) return std::nullopt;
  const auto first = parse_position(range.substr(0, dash));
  const auto last = parse_position(range.substr(dash + 1));
  const bool open_start = dash == 0;
  const bool open_end = dash + 1 == range.size();
  if ((!first && !open_start) || (!last && !open_end) || (open_start && open_end)) return std::nullopt;
  if (open_start) {
    const std::uint64_t length = std::min(*last, size);
    return ByteRange{length > 0, size - length, length};
  }
  if (last && *last < *first) return std::nullopt;
  if (*first >= size) return ByteRange{false, 0, 0};
  const std::uint64_t end = last ? std::min(*last, size - 1) : size - 1;
  return ByteRange{true, *first, end - *first + 1};
}

std::string_view content_type_of(std::string_view file_name) {
  using Row = std::pair<std::string_view, std::string_view>;
  constexpr std::array<Row, 39> kTypes = {{{"avif", "image/avif"},
                                           {"bmp", "image/bmp"},
                                           {"css", "text/css; charset=utf-8"},
                                           {"csv", "text/csv; charset=utf-8"},
                                           {"gif", "image/gif"},
                                           {"gz", "application/gzip"},
                                           {"htm", "text/html; charset=utf-8"},
                                           {"html", "text/html; charset=utf-8"},
                                           {"ico", "image/x-icon"},
                                           {"jpeg", "image/jpeg"},
                                           {"jpg", "image/jpeg"},
                                           {"js", "text/javascript; charset=utf-8"},
                                           {"json", "application/json"},
                                           {"map", "application/json"},
                                           {"md", "text/markdown; charset=utf-8"},
                                           {"mjs", "text/javascript; charset=utf-8"},
                                           {"mp3", "audio/mpeg"},
                                           {"mp4", "video/mp4"},
                                           {"oga", "audio/ogg"},
                                           {"ogg", "audio/ogg"},
                                           {"ogv", "video/ogg"},
                                           {"otf", "font/otf"},
                                           {"pdf", "application/pdf"},
                                           {"png", "image/png"},
                                           {"rss", "application/rss+xml"},
                                           {"svg", "image/svg+xml"},
                                           {"tar", "application/x-tar"},
                                           {"ttf", "font/ttf"},
                                           {"txt", "text/plain; charset=utf-8"},
                                           {"wasm", "application/wasm"},
                                           {"wav", "audio/wav"},
                                           {"webm", "video/webm"},
                                           {"webmanifest", "application/manifest+json"},
                                           {"webp", "image/webp"},
                                           {"woff", "font/woff"},
                                           {"woff2", "font/woff2"},
                                           {"xhtml", "application/xhtml+xml"},
                                           {"xml", "application/xml"},
                                           {"zip", "application/zip"}}};
  static_assert(std::ranges::is_sorted(kTypes, {}, &Row::first));
  const std::string extension = base::ascii_lowered(extension_of(file_name));
  if (!extension.empty()) {
    const std::string_view name = std::string_view(extension).substr(1);
    const auto found = std::ranges::lower_bound(kTypes, name, {}, &Row::first);
    if (found != kTypes.end() && found->first == name) return found->second;
  }
  return kUnknownType;
}

std::shared_ptr<const OpenFile> describe_file(std::string_view name, base::FileDescriptor file) {
  auto described = std::make_shared<OpenFile>();
  struct stat& about = described->about;
  if (!file || ::fstat(file.get(), &about) != 0 || !S_ISREG(about.st_mode)) return nullptr;
  described->descriptor = std::move(file);
  described->tag = entity_tag(about);
  described->modified = http_date(about.st_mtim.tv_sec);
  std::vector<Header> headers = {
      {"ETag", described->tag}, {"Last-Modified", described->modified}, {"Cache-Control", "no-cache"}};
  described->lines_alone = write_header_lines(headers);
  const std::string_view type = content_type_of(name);
  headers.push_back({"Content-Type", std::string(type)});
  if (type == kUnknownType) headers.push_back({"Content-Disposition", "attachment"});
  headers.push_back({"Accept-Ranges", "bytes"});
  described->lines = write_header_lines(headers);
  return described;
}

void send_file(const HttpRequest& request, const std::shared_ptr<const OpenFile>& file, ResponseSink& sink) {
  if (!file) return serve_status(sink, status::kNotFound);
  const auto size = static_cast<std::uint64_t>(file->about.st_size);
  ResponseHead head;
  if (is_unmodified(request, file->tag, file->about.st_mtim.tv_sec)) {
    head.status = status::kNotModified;
    head.reason = reason_of(head.status);
    head.lines = file->lines_alone;
    sink.start(std::move(head), 0);
    return sink.finish();
  }
  ByteRange range{true, 0, size};
  if (const auto wanted = wanted_range(request, file->tag, file->modified, size)) {
    if (!wanted->satisfiable) {
      return serve_status(sink, status::kRangeNotSatisfiable, {}, {{"Content-Range", fmt::format("bytes */{}", size)}});
    }
    range = *wanted;
    head.status = status::kPartialContent;
    head.reason = reason_of(head.status);
    head.headers.push_back(
        {"Content-Range", fmt::format("bytes {}-{}/{}", range.first, range.first + range.length - 1, size)});
  }
  head.lines = file->lines;
  sink.start(std::move(head), range.length);
  sink.write_file(SharedFile(file, &file->descriptor), range.first, range.length);
  sink.finish();
}

}  // namespace zelto
