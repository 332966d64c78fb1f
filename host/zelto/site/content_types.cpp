#include "site/content_types.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "base/letter_case.h"

namespace zelto {

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
  return "application/octet-stream";
}

}  // namespace zelto
