// What the access log says: one line per answered request.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace zelto {

struct AccessRecord {
  std::string remote_address;
  std::string request_line;
  std::string referer;
  std::string user_agent;
  std::string note;  // what the page appended
  int status = 0;
  std::uint64_t body_bytes = 0;  // sent
  std::chrono::system_clock::time_point received;
  std::chrono::microseconds taken{};
};

// The "combined" form with the seconds that the answer took after it, and what the page appended:
//   127.0.0.1 - - [21/Nov/2026:10:00:00 +0000] "GET / HTTP/1.1" 200 512 "-" "agent" 0.004 note
// Quotes, backslashes and control characters, each byte of one, are written as \xHH; so is what is not ASCII in the
// text of a client.
void append_combined_line(std::string& out, const AccessRecord& record);

}  // namespace zelto
