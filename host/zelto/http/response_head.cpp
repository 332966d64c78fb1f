#include "http/response_head.h"

#include <ctime>

#include "base/letter_case.h"
#include "http/status.h"
#include "text/http_date.h"
#include "text/http_grammar.h"

namespace zelto {

namespace {

// Formatting costs more than the rest of the head, and the text changes once a second.
const std::string& date_now() {
  thread_local std::time_t written = 0;
  thread_local std::string text;
  const std::time_t now = std::time(nullptr);
  if (now != written || text.empty()) {
    text = http_date(now);
    written = now;
  }
  return text;
}

void append_line(std::string& out, std::string_view name, std::string_view value) {
  out.append(name).append(": ").append(value).append("\r\n");
}

}  // namespace

std::string write_response_head(const ResponseHead& head, Framing framing, std::uint64_t length, bool keep_alive) {
  std::string out;
  out.reserve(256);
  out.append("HTTP/1.1 ").append(std::to_string(head.status)).append(" ");
  out.append(is_field_value(head.reason) ? std::string_view(head.reason) : reason_of(head.status)).append("\r\n");
  append_line(out, "Date", date_now());
  append_line(out, "Server", "Zelto");
  bool sniffing_settled = false;
  for (const Header& header : head.headers) {
    if (is_connection_header(header.name) || !is_token(header.name) || !is_field_value(header.value)) continue;
    sniffing_settled |= base::equal_ascii(header.name, "X-Content-Type-Options");
    append_line(out, header.name, header.value);
  }
  if (!sniffing_settled) append_line(out, "X-Content-Type-Options", "nosniff");
  if (framing == Framing::length) append_line(out, "Content-Length", std::to_string(length));
  if (framing == Framing::chunked) append_line(out, "Transfer-Encoding", "chunked");
  append_line(out, "Connection", keep_alive ? "keep-alive" : "close");
  out.append("\r\n");
  return out;
}

}  // namespace zelto
