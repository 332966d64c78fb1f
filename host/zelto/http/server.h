// The HTTP/1.1 server: receives requests and sends answers on I/O threads; what a router does not answer there, a
// worker thread does.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "http/access_log.h"
#include "http/limits.h"
#include "http/spool.h"
#include "http/worker.h"

namespace zelto {

struct ServerOptions {
  std::string address = "127.0.0.1";
  std::uint16_t port = 0;  // 0 takes any free one
  // A socket that listens at `address` already, which the server takes over; it makes its own when there is none.
  int listening_socket = -1;
  // 0 for one for every two processors. Requests that come while a loop has its turn are read in one: with more loops,
  // each wakes for fewer, and interrupts the workers for it.
  unsigned io_threads = 0;
  unsigned workers = 2;
  std::size_t worker_stack = std::size_t{8} * 1024 * 1024;
  std::size_t queue = 256;     // requests that may wait for a worker; others get 503
  std::size_t turn_queue = 8;  // requests that may wait for others of their session; others get 503
  // Addresses whose X-Forwarded-Proto is believed, as they are written in AccessRecord. The limit of connections for
  // each address does not hold for them.
  std::vector<std::string> trusted_proxies{};
  HttpLimits limits{};
  SpoolLimits spool{};
  std::function<void(const AccessRecord&)> on_access{};  // called on I/O threads, one call at a time
  // The same as append_combined_line() writes it, many at a time; called on any I/O thread, see AccessLines::Take.
  std::function<void(std::string_view lines, std::size_t count)> on_access_lines{};
  std::function<void(std::string_view)> on_problem{};  // called on any thread: a line for the log
  std::function<void()> on_beat{};                     // called every `beat` while no I/O thread is stuck
  std::chrono::milliseconds beat{1000};
};

class Server {
 public:
  // `router` outlives the server; without one, workers answer every request.
  Server(ServerOptions options, WorkerFactory factory, Router* router = nullptr);
  // Stops at once if stop() was not called.
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Binds, listens and starts the threads. Throws std::system_error when the address cannot be had, and
  // what the factory throws when a worker cannot be made.
  void start();
  // The port that is listened on.
  std::uint16_t port() const;
  // Connections that are accepted from now on get these limits, other than their number, and trust these proxies. May
  // be called from any thread.
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
