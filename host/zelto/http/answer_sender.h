// Sends the part of an answer that its worker left unsent.
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

#include "http/deadline.h"
#include "http/socket_sink.h"

namespace zelto {

// A client that takes nothing for the send time-out misses the deadline, and whoever watches that cancels the
// socket's operations. Runs on the socket's strand.
class AnswerSender {
 public:
  using Socket = boost::asio::ip::tcp::socket;

  AnswerSender(Socket& socket, SocketSink& sink, Deadline& deadline, std::chrono::milliseconds timeout,
               std::function<void()> on_sent)
      : socket_(socket), sink_(sink), deadline_(deadline), timeout_(timeout), on_sent_(std::move(on_sent)) {}

  // Calls on_sent once everything is sent or the sink has failed; not when the socket is closed meanwhile.
  // `owner` holds this object and is kept alive until then.
  void send(const std::shared_ptr<void>& owner);

 private:
  void send_bytes(const std::shared_ptr<void>& owner);
  void send_file(const std::shared_ptr<void>& owner);

  Socket& socket_;
  SocketSink& sink_;
  Deadline& deadline_;
  const std::chrono::milliseconds timeout_;
  const std::function<void()> on_sent_;
  std::size_t sent_ = 0;  // of the bytes
};

}  // namespace zelto
