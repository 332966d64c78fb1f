// The HTTP/1.1 server: receives requests on I/O threads and hands each complete one to a worker thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "http/message.h"

namespace zelto {

// What a client may ask for, and how long it may take. A zero duration switches a limit off.
struct HttpLimits {
  using Duration = std::chrono::milliseconds;

  std::size_t header_bytes = 16'384;  // request line and headers
  std::size_t header_lines = 100;
  std::size_t chunk_extension_bytes = 4'096;
  std::uint64_t body_bytes = std::uint64_t{16} * 1024 * 1024;
  Duration header_timeout = std::chrono::seconds(10);
  Duration body_timeout = std::chrono::seconds(30);  // between two reads
  std::uint64_t body_rate = 256;                     // bytes a second, in every span of body_timeout
  Duration send_timeout = std::chrono::seconds(30);  // between two writes
  Duration keep_alive_timeout = std::chrono::seconds(15);
  unsigned keep_alive_requests = 1000;
  // Reading on after an answer that came too early: between two reads, and in all.
  Duration drain_timeout = std::chrono::seconds(5);
  std::uint64_t drain_bytes = std::uint64_t{1} << 30;
  std::size_t connections = 4096;
};

// One answered request, for the access log.
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

// Answers requests on one thread. Made, called and destroyed on its worker thread.
class Worker {
 public:
  virtual ~Worker() = default;
  // Answers the request through the sink: start, any writes, finish. A request that was not answered
  // when this returns or throws gets a plain 500 answer.
  virtual void handle(HttpRequest&& request, ResponseSink& sink) = 0;
};
using WorkerFactory = std::function<std::unique_ptr<Worker>()>;

struct ServerOptions {
  std::string address = "127.0.0.1";
  std::uint16_t port = 0;  // 0 takes any free one
  unsigned io_threads = 1;
  unsigned workers = 2;
  std::size_t worker_stack = std::size_t{8} * 1024 * 1024;
  std::size_t queue = 256;  // requests that may wait for a worker; others get 503
  // Addresses whose X-Forwarded-Proto is believed, as they are written in AccessRecord.
  std::vector<std::string> trusted_proxies{};
  HttpLimits limits{};
  std::function<void(const AccessRecord&)> on_access{};  // called on I/O threads, one call at a time
};

class Server {
 public:
  Server(ServerOptions options, WorkerFactory factory);
  // Stops at once if stop() was not called.
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Binds, listens and starts the threads. Throws std::system_error when the address cannot be had, and
  // what the factory throws when a worker cannot be made.
  void start();
  // The port that is listened on.
  std::uint16_t port() const;
  // Has the connections that come from now on keep these limits, but for their number, and trust these proxies. May be
  // called from any thread.
  void change(const HttpLimits& limits, std::vector<std::string> trusted_proxies);
  // Accepts no more connections, closes idle ones, lets the requests that were received be answered for up
  // to `grace`, then closes every connection and joins the workers, which end the pages that they run.
  // True when every request was answered.
  bool stop(std::chrono::milliseconds grace);

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace zelto
