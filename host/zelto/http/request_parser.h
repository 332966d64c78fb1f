// Finds the head of a request, and parses the request: head, then body, chunked or counted, into an HttpRequest.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "http/limits.h"
#include "http/message.h"

namespace zelto {

// Finds the end of a head while it arrives, and refuses what no later step could see any more.
// Looks at every byte once, however the head arrives.
class HeadScanner {
 public:
  enum class Verdict { more, complete, bare_line_end, folded, target_too_long, too_large };

  HeadScanner(std::size_t most_bytes, std::size_t most_lines) : most_bytes_(most_bytes), most_lines_(most_lines) {}

  // `received` is everything received so far, from the first byte of the request line.
  Verdict scan(std::string_view received);
  // After complete: the size of the head with its empty line.
  std::size_t size() const { return line_begin_; }

 private:
  std::size_t most_bytes_;
  std::size_t most_lines_;
  std::size_t line_begin_ = 0;
  std::size_t scanned_ = 0;
  std::size_t lines_ = 0;
};

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

  // Takes bytes of the body from the front of `received`; `used` tells how many. too_large once the body
  // is known to be over the limit: the request then says so and the rest must not be parsed. too_many_parts once it
  // has more of them than an upload may have.
  enum class Progress { more, done, too_large, too_many_parts, bad, trailer_too_large };
  Progress parse_body(std::string_view received, std::size_t& used);

  HttpRequest& request();
  const HttpRequest& request() const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace zelto
