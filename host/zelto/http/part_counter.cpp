#include "http/part_counter.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/letter_case.h"
#include "text/http_grammar.h"

namespace zelto {

std::string part_delimiter(std::string_view content_type) {
  constexpr std::string_view kMultipart = "multipart/";
  constexpr std::string_view kBoundary = "boundary=";
  if (!base::equal_ascii(content_type.substr(0, kMultipart.size()), kMultipart)) return {};
  std::string delimiter;
  for_each_piece(content_type, ';', [&](std::string_view piece) {
    const std::string_view parameter = trim_blanks(piece);
    if (!delimiter.empty() || !base::equal_ascii(parameter.substr(0, kBoundary.size()), kBoundary)) return;
    std::string_view boundary = trim_blanks(parameter.substr(kBoundary.size()));
    if (boundary.size() > 1 && boundary.front() == '"' && boundary.back() == '"') {
      boundary = boundary.substr(1, boundary.size() - 2);
    }
    if (!boundary.empty()) delimiter.append("--").append(boundary);
  });
  return delimiter;
}

void PartCounter::add(std::string_view bytes) {
  if (delimiter_.empty()) return;
  const std::size_t kept = delimiter_.size() - 1;
  const std::string seam = tail_ + std::string(bytes.substr(0, kept));  // has room for one
  if (const std::size_t at = seam.find(delimiter_); at != std::string::npos) {
    ++count_;
    bytes.remove_prefix(at + delimiter_.size() - tail_.size());
    tail_.clear();
  }
  while (const void* found = ::memmem(bytes.data(), bytes.size(), delimiter_.data(), delimiter_.size())) {
    ++count_;
    tail_.clear();
    bytes.remove_prefix(static_cast<std::size_t>(static_cast<const char*>(found) - bytes.data()) + delimiter_.size());
  }
  if (bytes.size() >= kept) tail_.clear();
  tail_.append(bytes.substr(bytes.size() - std::min(kept, bytes.size())));
  if (tail_.size() > kept) tail_.erase(0, tail_.size() - kept);
}

}  // namespace zelto
