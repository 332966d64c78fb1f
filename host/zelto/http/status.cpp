#include "http/status.h"

#include <fmt/format.h>

#include <boost/beast/http/status.hpp>
#include <utility>

namespace zelto {

namespace http = boost::beast::http;

std::string_view reason_of(int status) {
  // RFC 9110 renamed these two after the library's names were written.
  if (status == status::kContentTooLarge) return "Content Too Large";
  if (status == 422) return "Unprocessable Content";
  const http::status known = http::int_to_status(static_cast<unsigned>(status));
  if (known == http::status::unknown) return "Unknown";
  const auto reason = http::obsolete_reason(known);
  return {reason.data(), reason.size()};
}

std::string status_line(int status) { return fmt::format("{} {}", status, reason_of(status)); }

void serve_status(ResponseSink& sink, int status, std::string_view text, std::vector<Header> headers) {
  const std::string title = status_line(status);
  const std::string body = fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\"><head><title>{}</title></head>\n<body><h1>{}</h1>{}</body></html>\n", title,
      title, text.empty() ? std::string() : fmt::format("<p>{}</p>", text));
  headers.push_back({"Content-Type", "text/html; charset=utf-8"});
  sink.start({status, std::string(reason_of(status)), std::move(headers)}, body.size());
  sink.write(body);
  sink.finish();
}

}  // namespace zelto
