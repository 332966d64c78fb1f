// Status codes, their reasons, and the small page that shows one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "http/message.h"

namespace zelto {

// Those that the host itself answers with.
namespace status {
inline constexpr int kOk = 200;
inline constexpr int kResetContent = 205;
inline constexpr int kPartialContent = 206;
inline constexpr int kMovedPermanently = 301;
inline constexpr int kNotModified = 304;
inline constexpr int kBadRequest = 400;
inline constexpr int kNotFound = 404;
inline constexpr int kMethodNotAllowed = 405;
inline constexpr int kRequestTimeout = 408;
inline constexpr int kContentTooLarge = 413;
inline constexpr int kTargetTooLong = 414;
inline constexpr int kRangeNotSatisfiable = 416;
inline constexpr int kExpectationFailed = 417;
inline constexpr int kHeadTooLarge = 431;
inline constexpr int kServerError = 500;
inline constexpr int kNotImplemented = 501;
inline constexpr int kUnavailable = 503;
inline constexpr int kVersionNotSupported = 505;
}  // namespace status

// The standard reason of a status, "Not Found"; "Unknown" for others.
std::string_view reason_of(int status);
// "404 Not Found".
std::string status_line(int status);

// True for the answers that never have a body.
constexpr bool is_bodiless(int status) {
  return status / 100 == 1 || status == 204 || status == status::kResetContent || status == status::kNotModified;
}

// Answers with a small HTML page that says `status` and `text`, which is HTML, and nothing about the inside.
void serve_status(ResponseSink& sink, int status, std::string_view text = {}, std::vector<Header> headers = {});

}  // namespace zelto
