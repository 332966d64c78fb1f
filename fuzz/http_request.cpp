// A request as it comes from the network: however it is cut, it must be understood in the same way.
#include <algorithm>
#include <string>

#include "http/request_parser.h"
#include "text_input.h"

namespace {

using zelto::HeadScanner;
using zelto::RequestParser;

struct Outcome {
  int status = 0;  // 0: the head did not end
  std::string path;
  std::string body;
  bool too_large = false;
  RequestParser::Progress progress = RequestParser::Progress::done;

  bool operator==(const Outcome&) const = default;
};

// Reads `bytes` in pieces of `step`.
Outcome receive(std::string_view bytes, std::size_t step) {
  zelto::HttpLimits limits;
  limits.header_bytes = 2048;
  limits.header_lines = 20;
  limits.body_bytes = 200;
  limits.chunk_extension_bytes = 50;
  Outcome outcome;
  HeadScanner scanner(limits.header_bytes, limits.header_lines);
  std::size_t seen = 0;
  auto verdict = HeadScanner::Verdict::more;
  while (verdict == HeadScanner::Verdict::more && seen < bytes.size()) {
    seen = std::min(seen + step, bytes.size());
    verdict = scanner.scan(bytes.substr(0, seen));
  }
  if (verdict != HeadScanner::Verdict::complete) return outcome;

  RequestParser parser(limits);
  outcome.status = parser.parse_head(bytes.substr(0, scanner.size()));
  if (outcome.status != 200) return outcome;
  outcome.path = parser.request().path;
  fuzz::require(outcome.path.starts_with('/'), "a path begins with a slash");
  fuzz::require(outcome.path.find("/../") == std::string::npos && !outcome.path.ends_with("/.."), "no way up");
  fuzz::require(outcome.path.find_first_of(std::string_view("\\\0\r\n", 4)) == std::string::npos, "clean text");
  std::string pending;
  bytes.remove_prefix(scanner.size());
  outcome.progress = RequestParser::Progress::more;
  if (!parser.needs_body()) outcome.progress = RequestParser::Progress::done;
  while (outcome.progress == RequestParser::Progress::more && !bytes.empty()) {
    pending += bytes.substr(0, step);
    bytes.remove_prefix(std::min(step, bytes.size()));
    std::size_t used = 0;
    outcome.progress = parser.parse_body(pending, used);
    fuzz::require(used <= pending.size(), "uses what it was given");
    pending.erase(0, used);
  }
  outcome.too_large = parser.request().body_too_large;
  outcome.body = parser.request().body;
  fuzz::require(outcome.body.size() <= limits.body_bytes, "the limit of a body");
  return outcome;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 4096));
  const Outcome whole = receive(bytes, 4096);
  for (const std::size_t step : {std::size_t{1}, std::size_t{7}})
    fuzz::require(receive(bytes, step) == whole, "the same however it is cut");
  return 0;
}
