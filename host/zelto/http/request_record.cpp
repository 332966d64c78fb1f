#include "http/request_record.h"

#include <utility>

namespace zelto {

void RequestRecord::begin(std::string remote_address, std::string_view request_line) {
  clear();
  record_.remote_address = std::move(remote_address);
  record_.request_line = request_line;
  record_.received = std::chrono::system_clock::now();
  began_ = Clock::now();
}

void RequestRecord::add_client(const HttpRequest& request) {
  if (const auto* referer = request.header("Referer")) record_.referer = *referer;
  if (const auto* agent = request.header("User-Agent")) record_.user_agent = *agent;
}

const AccessRecord& RequestRecord::end(const SocketSink& sink) {
  record_.status = sink.status();
  record_.body_bytes = sink.body_bytes();
  record_.note = sink.note();
  record_.taken = std::chrono::duration_cast<std::chrono::microseconds>(ended_.value_or(Clock::now()) - began_);
  return record_;
}

}  // namespace zelto
