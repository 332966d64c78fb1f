// How long a connection's client is waited for.
#pragma once

#include <boost/asio/basic_waitable_timer.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

#include "http/io_loop.h"

namespace zelto {

using Timer = boost::asio::basic_waitable_timer<std::chrono::steady_clock,
                                                boost::asio::wait_traits<std::chrono::steady_clock>, IoLoop::Executor>;

// The moment by which the client must have done something.
// One timer, moved only when the deadline comes nearer: a request arms several, and mostly meets them all.
// Everything happens on its loop.
class Deadline {
 public:
  Deadline(const IoLoop::Executor& loop, std::function<void()> on_missed)
      : timer_(loop), on_missed_(std::move(on_missed)) {}

  // From now; replaces the deadline before. Zero is none. `owner` holds this object and is kept alive while
  // the timer runs.
  void arm(std::chrono::milliseconds duration, std::shared_ptr<void> owner);
  // For good: nothing is called any more, and the owner is released.
  void stop();

 private:
  using Clock = std::chrono::steady_clock;
  void watch(std::shared_ptr<void> owner);
  bool goes_on(std::shared_ptr<void> owner);

  Timer timer_;
  std::function<void()> on_missed_;
  Clock::time_point at_ = Clock::time_point::max();
  Clock::time_point timer_at_ = Clock::time_point::max();
  bool stopped_ = false;
};

// Whether a client sends fast enough to be waited for.
// Each span of time counts by itself: a client that was fast at first may not be slow later.
class ReadRate {
 public:
  using Clock = std::chrono::steady_clock;

  // `least` bytes a second in every `span`. A span of zero asks for nothing.
  ReadRate(std::chrono::milliseconds span, std::uint64_t least) : span_(span), least_(least) {}

  void begin(Clock::time_point now);
  // Counts what was read. True when that ends a span in which it was too little.
  bool is_too_slow(std::uint64_t bytes, Clock::time_point now);

 private:
  std::chrono::milliseconds span_;
  std::uint64_t least_;
  Clock::time_point began_;
  std::uint64_t bytes_ = 0;
};

}  // namespace zelto
