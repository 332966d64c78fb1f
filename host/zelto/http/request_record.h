// What the access log will say of the request that a connection is about.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "http/access_log.h"
#include "http/message.h"
#include "http/socket_sink.h"

namespace zelto {

class RequestRecord {
 public:
  // The request begins to count: its time is taken from now on.
  void begin(std::string remote_address, std::string_view request_line);
  // What the client says of itself.
  void add_client(const HttpRequest& request);
  bool has_begun() const { return !record_.request_line.empty(); }
  // The answer has been sent. Without this, its time ends with end().
  void stop() { ended_ = Clock::now(); }

  // The whole, once the answer has been sent or cut off.
  const AccessRecord& end(const SocketSink& sink);
  void clear() { *this = {}; }

 private:
  using Clock = std::chrono::steady_clock;

  AccessRecord record_;
  Clock::time_point began_;
  std::optional<Clock::time_point> ended_;
};

}  // namespace zelto
