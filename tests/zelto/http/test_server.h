// A server with a worker that does what the path says.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "http/server.h"

namespace zelto_test {

// A header line that every request needs.
inline const std::string kHost = "Host: test\r\n";

zelto::ServerOptions with_limits(const zelto::HttpLimits& limits);

// Where threads wait until a test lets them go on.
class Gate {
 public:
  void wait_here();            // called by a server's thread
  void wait_for(int threads);  // until that many wait
  void open();

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  int waiting_ = 0;
  bool open_ = false;
};

// Paths: /echo answers "METHOD path?query|body" ("too large N" in place of the body when it was); /length?N and
// /stream?N answer N bytes of known or unknown length; /gate waits at the gate; /gone waits at it, then answers
// whether the client is connected; /encrypted answers whether the request came so; /host answers its Host header;
// /broken?N breaks off after N bytes; /half waits at the gate in the middle; /throw, /silent, /short misbehave;
// /status?N answers that status; /kind?K is a page of the kind K, which waits at the other gate with "&wait". The
// router answers /routed itself, the query thrice after it, fails at /unroutable, gives /turn?T the turn T before the
// worker waits at the gate, and waits at it itself, on an I/O thread, for /stuck.
class TestServer {
 public:
  explicit TestServer(zelto::ServerOptions options = {});
  ~TestServer();
  TestServer(const TestServer&) = delete;
  TestServer& operator=(const TestServer&) = delete;

  std::uint16_t port() const { return server->port(); }
  // The records so far, once there are that many.
  std::vector<zelto::AccessRecord> wait_for_records(std::size_t count);

  Gate gate;
  Gate other_gate;
  std::vector<bool> connected_before_and_after_gate;
  std::vector<std::string> problems;  // that the server told, once it has stopped
  std::unique_ptr<zelto::Server> server;

 private:
  std::unique_ptr<zelto::Router> router_;
  std::mutex lock_;
  std::condition_variable changed_;
  std::vector<zelto::AccessRecord> records_;
};

}  // namespace zelto_test
