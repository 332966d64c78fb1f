#include "http/response_head.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <utility>

#include "base/letter_case.h"
#include "text/http_date.h"
#include "text/http_grammar.h"

namespace zelto {

namespace {

bool is_ours(std::string_view name) {
  constexpr std::array<std::string_view, 7> kOurs = {"Content-Length", "Transfer-Encoding", "Connection", "Date",
                                                     "Server",         "Keep-Alive",        "Trailer"};
  return std::ranges::any_of(kOurs, [&](std::string_view ours) { return base::equal_ascii(ours, name); });
}

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

std::string_view reason_of(int status) {
  constexpr std::array<std::pair<int, std::string_view>, 36> kReasons = {{{200, "OK"},
                                                                          {201, "Created"},
                                                                          {202, "Accepted"},
                                                                          {204, "No Content"},
                                                                          {205, "Reset Content"},
                                                                          {206, "Partial Content"},
                                                                          {301, "Moved Permanently"},
                                                                          {302, "Found"},
                                                                          {303, "See Other"},
                                                                          {304, "Not Modified"},
                                                                          {307, "Temporary Redirect"},
                                                                          {308, "Permanent Redirect"},
                                                                          {400, "Bad Request"},
                                                                          {401, "Unauthorized"},
                                                                          {403, "Forbidden"},
                                                                          {404, "Not Found"},
                                                                          {405, "Method Not Allowed"},
                                                                          {406, "Not Acceptable"},
                                                                          {408, "Request Timeout"},
                                                                          {409, "Conflict"},
                                                                          {410, "Gone"},
                                                                          {411, "Length Required"},
                                                                          {412, "Precondition Failed"},
                                                                          {413, "Content Too Large"},
                                                                          {414, "URI Too Long"},
                                                                          {415, "Unsupported Media Type"},
                                                                          {416, "Range Not Satisfiable"},
                                                                          {417, "Expectation Failed"},
                                                                          {422, "Unprocessable Content"},
                                                                          {429, "Too Many Requests"},
                                                                          {431, "Request Header Fields Too Large"},
                                                                          {500, "Internal Server Error"},
                                                                          {501, "Not Implemented"},
                                                                          {503, "Service Unavailable"},
                                                                          {504, "Gateway Timeout"},
                                                                          {505, "HTTP Version Not Supported"}}};
  const auto found = std::ranges::find(kReasons, status, &std::pair<int, std::string_view>::first);
  return found == kReasons.end() ? "Unknown" : found->second;
}

std::string write_response_head(const ResponseHead& head, Framing framing, std::uint64_t length, bool keep_alive) {
  std::string out;
  out.reserve(256);
  out.append("HTTP/1.1 ").append(std::to_string(head.status)).append(" ");
  out.append(is_field_value(head.reason) ? std::string_view(head.reason) : reason_of(head.status)).append("\r\n");
  append_line(out, "Date", date_now());
  append_line(out, "Server", "Zelto");
  bool sniffing_settled = false;
  for (const Header& header : head.headers) {
    if (is_ours(header.name) || !is_token(header.name) || !is_field_value(header.value)) continue;
    sniffing_settled |= base::equal_ascii(header.name, "X-Content-Type-Options");
    append_line(out, header.name, header.value);
  }
  if (!sniffing_settled) append_line(out, "X-Content-Type-Options", "nosniff");
  if (framing == Framing::kLength) append_line(out, "Content-Length", std::to_string(length));
  if (framing == Framing::kChunked) append_line(out, "Transfer-Encoding", "chunked");
  append_line(out, "Connection", keep_alive ? "keep-alive" : "close");
  out.append("\r\n");
  return out;
}

}  // namespace zelto
