// What the access log will say of the request that a connection is about.
#pragma once

#include <chrono>
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

  // The whole, once the answer has been sent or cut off.
  const AccessRecord& end(const SocketSink& sink);
  void clear() { record_ = {}; }

 private:
  AccessRecord record_;
  std::chrono::steady_clock::time_point began_;
};

}  // namespace zelto
