// What a client may ask for, and how long it may take.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace zelto {

// A zero duration switches a limit off.
struct HttpLimits {
  using Duration = std::chrono::milliseconds;

  std::size_t header_bytes = 16'384;  // request line and headers
  std::size_t header_lines = 100;
  std::size_t chunk_extension_bytes = 4'096;
  std::size_t trailer_bytes = 4'096;
  std::uint64_t body_bytes = std::uint64_t{16} * 1024 * 1024;
  std::size_t upload_parts = 20'000;  // of a multipart body
  bool takes_underscores = false;     // in names of headers: pages cannot tell X_User from X-User
  Duration header_timeout = std::chrono::seconds(10);
  Duration body_timeout = std::chrono::seconds(30);  // between two reads
  std::uint64_t body_rate = 256;                     // bytes a second, in every span of body_timeout
  Duration send_timeout = std::chrono::seconds(30);  // a span in which a client must take something of its answer
  std::uint64_t send_rate = 256;                     // bytes a second, in every such span
  std::size_t send_memory = std::size_t{1} << 20;    // of an answer, before it waits in a file
  Duration turn_timeout = std::chrono::seconds(30);  // that a request waits for those before it of its session
  Duration keep_alive_timeout = std::chrono::seconds(15);
  unsigned keep_alive_requests = 1000;
  // Reading on after an answer that came too early, whichever is reached first.
  Duration drain_timeout = std::chrono::seconds(5);
  std::uint64_t drain_bytes = std::uint64_t{256} * 1024;
  std::uint64_t drain_upload_bytes = std::uint64_t{256} << 20;  // when it was a page that answered
  std::size_t connections = 4096;
  std::size_t connections_per_address = 2048;  // of an IPv6 client, its /64; zero is no limit
  bool limits_loopback = false;                // whether that holds for the machine's own clients, a proxy perhaps
};

}  // namespace zelto
