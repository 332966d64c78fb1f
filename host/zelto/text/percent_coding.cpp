#include "text/percent_coding.h"

#include <algorithm>

#include "base/ascii.h"
#include "text/numbers.h"

namespace zelto {

namespace {

constexpr std::size_t kEscapeLength = 3;

}  // namespace

void append_hex(std::string& out, char byte) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  out += kDigits[value >> 4U];
  out += kDigits[value & 15U];
}

std::optional<char> escaped_byte(std::string_view text) {
  if (text.size() < kEscapeLength || text.front() != '%') return std::nullopt;
  const auto byte = parse_number<unsigned char>(text.substr(1, kEscapeLength - 1), 16);
  return byte ? std::optional(static_cast<char>(*byte)) : std::nullopt;
}

std::string percent_encode(std::string_view bytes, bool (*stays)(char)) {
  std::string out;
  out.reserve(bytes.size());
  for (const char c : bytes) {
    if (stays(c)) {
      out += c;
    } else {
      append_hex(out += '%', c);
    }
  }
  return out;
}

std::string form_encode(std::string_view bytes) {
  std::string out = percent_encode(
      bytes, [](char c) { return base::is_alphanumeric(c) || c == '-' || c == '_' || c == '.' || c == ' '; });
  std::ranges::replace(out, ' ', '+');
  return out;
}

std::string form_decode(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::optional<char> byte = escaped_byte(text);
    out += byte ? *byte : text.front() == '+' ? ' ' : text.front();
    text.remove_prefix(byte ? kEscapeLength : 1);
  }
  return out;
}

std::string escape_url(std::string_view url) {
  return percent_encode(url, [](char c) {
    return c > ' ' && c < 0x7F && std::string_view("\"<>\\^`{|}").find(c) == std::string_view::npos;
  });
}

}  // namespace zelto
