#include "site/byte_range.h"

#include <algorithm>
#include <charconv>

#include "base/letter_case.h"
#include "text/http_grammar.h"

namespace zelto {

namespace {

// Digits only; a number too large for us is as good as the largest.
std::optional<std::uint64_t> parse_number(std::string_view text) {
  if (text.empty() || !std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; })) return std::nullopt;
  std::uint64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() ? value : ~std::uint64_t{0};
}

}  // namespace

std::optional<ByteRange> parse_range(std::string_view header, std::uint64_t size) {
  constexpr std::string_view kUnit = "bytes=";
  if (header.size() < kUnit.size() || !base::equal_ascii(header.substr(0, kUnit.size()), kUnit)) return std::nullopt;
  const std::string_view range = trim_blanks(header.substr(kUnit.size()));
  const auto dash = range.find('-');
  if (dash == std::string_view::npos || range.find(',') != std::string_view::npos) return std::nullopt;
  const auto first = parse_number(range.substr(0, dash));
  const auto last = parse_number(range.substr(dash + 1));
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

}  // namespace zelto
