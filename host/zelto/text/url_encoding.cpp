#include "text/url_encoding.h"

#include "text/ascii.h"
#include "text/charset.h"

namespace zelto {

std::string percent_decode(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && hex_value(text[i + 1]) >= 0 && hex_value(text[i + 2]) >= 0) {
      out += static_cast<char>(hex_value(text[i + 1]) << 4 | hex_value(text[i + 2]));
      i += 2;
    } else {
      out += text[i] == '+' ? ' ' : text[i];
    }
  }
  return out;
}

std::string url_encode(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (const char c : bytes) {
    if (is_alphanumeric(c) || c == '-' || c == '_' || c == '.') {
      out += c;
    } else if (c == ' ') {
      out += '+';
    } else {
      append_hex(out += '%', c);
    }
  }
  return out;
}

std::string escape_url(std::string_view url) {
  std::string out;
  out.reserve(url.size());
  for (const char c : url) {
    const bool is_plain = c > ' ' && c < 0x7F && std::string_view("\"<>\\^`{|}").find(c) == std::string_view::npos;
    if (is_plain) {
      out += c;
    } else {
      append_hex(out += '%', c);
    }
  }
  return out;
}

std::optional<FieldTable> parse_urlencoded(std::string_view text, LONG code_page) {
  FieldTable table;
  table.raw = decode(code_page, text);
  std::size_t count = 0;
  while (!text.empty()) {
    const std::size_t end = text.find('&');
    const std::string_view pair = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (pair.empty()) continue;
    if (++count > kMaxFormFields) return std::nullopt;
    const std::size_t equals = pair.find('=');
    const std::string_view value = equals == std::string_view::npos ? std::string_view() : pair.substr(equals + 1);
    table.add(decode(code_page, percent_decode(pair.substr(0, equals))), decode(code_page, percent_decode(value)));
  }
  return table;
}

}  // namespace zelto
