#include "http/response_head.h"

#include <array>
#include <charconv>
#include <ctime>
#include <utility>

#include "base/letter_case.h"
#include "http/status.h"
#include "text/http_date.h"
#include "text/http_grammar.h"

namespace zelto {

namespace {

void append_line(std::string& out, std::string_view name, std::string_view value) {
  out.append(name).append(": ").append(value).append("\r\n");
}

// Formatting costs more than the rest of the head, and the text changes once a second.
const std::string& lines_of_all() {
  thread_local std::time_t written = 0;
  thread_local std::string text;
  const std::time_t now = std::time(nullptr);
  if (now != written || text.empty()) {
    std::string fresh;
    append_line(fresh, "Date", http_date(now));
    append_line(fresh, "Server", "Zelto");
    text = std::move(fresh);
    written = now;
  }
  return text;
}

constexpr std::string_view kSniffing = "X-Content-Type-Options";

// Whether one of them says what is to be said of guessing types.
bool append_lines(std::string& out, std::span<const Header> headers) {
  bool sniffing_settled = false;
  for (const Header& header : headers) {
    if (is_connection_header(header.name) || !is_token(header.name) || !is_field_value(header.value)) continue;
    sniffing_settled |= base::equal_ascii(header.name, kSniffing);
    append_line(out, header.name, header.value);
  }
  return sniffing_settled;
}

void append_number(std::string& out, std::uint64_t number) {
  std::array<char, 20> digits{};
  out.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

}  // namespace

std::string write_header_lines(std::span<const Header> headers) {
  std::string out;
  if (!append_lines(out, headers)) append_line(out, kSniffing, "nosniff");
  return out;
}

std::string write_response_head(const ResponseHead& head, Framing framing, std::uint64_t length, bool keep_alive) {
  std::string out;
  out.reserve(512);
  out.append("HTTP/1.1 ");
  append_number(out, static_cast<std::uint64_t>(head.status));
  out.append(" ").append(is_field_value(head.reason) ? std::string_view(head.reason) : reason_of(head.status));
  out.append("\r\n").append(lines_of_all()).append(head.lines);
  const bool sniffing_settled = append_lines(out, head.headers) || !head.lines.empty();
  if (!sniffing_settled) append_line(out, kSniffing, "nosniff");
  if (framing == Framing::length) {
    out.append("Content-Length: ");
    append_number(out, length);
    out.append("\r\n");
  }
  if (framing == Framing::chunked) append_line(out, "Transfer-Encoding", "chunked");
  out.append(keep_alive ? "Connection: keep-alive\r\n\r\n" : "Connection: close\r\n\r\n");
  return out;
}

}  // namespace zelto
