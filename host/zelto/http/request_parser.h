// Parses one request: head, then body, chunked or counted, into an HttpRequest.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "http/message.h"
#include "http/server.h"

namespace zelto {

class RequestParser {
 public:
  explicit RequestParser(const HttpLimits& limits);
  ~RequestParser();
  RequestParser(const RequestParser&) = delete;
  RequestParser& operator=(const RequestParser&) = delete;

  // The whole head, as HeadScanner found it. 200 or the status to refuse the request with. Path and
  // query are set; addresses are the caller's.
  int parse_head(std::string_view head);
  bool needs_body() const;

  // Takes bytes of the body from the front of `received`; `used` tells how many. kTooLarge once the body
  // is known to be over the limit: the request then says so and the rest must not be parsed.
  enum class Progress { kMore, kDone, kTooLarge, kBad };
  Progress parse_body(std::string_view received, std::size_t& used);

  HttpRequest& request();

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace zelto
