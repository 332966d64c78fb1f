// Reads the requests of one client, one after the other, from the bytes that arrive, however they are cut.
#pragma once

#include <boost/beast/core/flat_buffer.hpp>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "http/limits.h"
#include "http/message.h"
#include "http/request_parser.h"

namespace zelto {

// Knows neither socket nor clock: its owner receives into room(), calls received(), and repeats the call that wanted
// more.
class RequestReader {
 public:
  // more: bytes are missing. refused: status() tells why. too_large: the body is over the limit; the request says so
  // and can be answered. After these two nothing more must be read.
  enum class Progress { more, done, too_large, refused };

  RequestReader(const HttpLimits& limits, Spool& spool) : limits_(limits), spool_(spool) { next(); }

  // Room after what has been received, until received() tells how much of it was used.
  std::span<char> room(std::size_t size);
  void received(std::size_t count);
  // Forgets what has been received; answers how many bytes that was.
  std::size_t drop();

  // The head, after done with path and query; addresses are the caller's.
  Progress read_head();
  // More of the body; `used` tells how many bytes that took.
  Progress read_body(std::size_t& used);
  // Gets ready for the next request, of which something may have been received already.
  void next();

  // Something of the request has been received, as far as read_head() has seen.
  bool has_begun() const { return input_.size() > 0; }
  // After the head.
  bool needs_body() const { return parser_->needs_body(); }
  // The client waits for "100 Continue", and has sent nothing of the body yet.
  bool awaits_continue() const;
  // As far as it has come, also of a head that was refused.
  std::string_view request_line() const;
  int minor_version() const { return parser_ ? parser_->request().minor_version : 1; }
  bool asks_head_only() const { return parser_ && parser_->request().method == "HEAD"; }
  HttpRequest& request() { return parser_->request(); }
  int status() const { return status_; }

 private:
  Progress refuse(int status);
  void skip_line_breaks();
  std::string_view input() const {
    const auto bytes = input_.cdata();
    return {static_cast<const char*>(bytes.data()), bytes.size()};
  }

  const HttpLimits& limits_;
  Spool& spool_;
  boost::beast::flat_buffer input_;  // what was received and not yet consumed
  std::string request_line_;         // of a head that is complete
  std::optional<HeadScanner> scanner_;
  std::optional<RequestParser> parser_;
  int status_ = 0;
};

}  // namespace zelto
