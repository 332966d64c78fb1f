// Sends what waits in an answer's queue, at the pace of its client.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

#include "http/answer_queue.h"
#include "http/deadline.h"
#include "http/limits.h"
#include "http/peer.h"

namespace zelto {

// Runs on the socket's loop.
class AnswerSender {
 public:
  // `on_end` is called once nothing waits any more or the answer has failed; not when the socket is closed meanwhile.
  AnswerSender(Socket& socket, AnswerQueue& queue, Deadline& deadline, const HttpLimits& limits,
               std::function<void()> on_end)
      : socket_(socket), queue_(queue), deadline_(deadline), limits_(limits), on_end_(std::move(on_end)) {}

  // Does nothing when nothing waits, or what waits is being sent. `owner` holds this object and is kept alive until
  // the end.
  void send(const std::shared_ptr<void>& owner);
  bool is_active() const { return active_; }
  // The deadline was missed: gives a client up that has taken too little since then, and waits on for another one.
  void on_timeout(const std::shared_ptr<void>& owner);

 private:
  void step(const std::shared_ptr<void>& owner);
  void watch(const std::shared_ptr<void>& owner);

  Socket& socket_;
  AnswerQueue& queue_;
  Deadline& deadline_;
  const HttpLimits& limits_;
  const std::function<void()> on_end_;
  bool active_ = false;
  bool watched_ = false;
  std::uint64_t delivered_ = 0;  // when the span began that is watched
  std::chrono::steady_clock::time_point span_began_;
};

}  // namespace zelto
