// The moment by which a connection's client must have done something.
#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <functional>
#include <memory>

namespace zelto {

// One timer, moved only when the deadline comes nearer: a request arms several, and mostly meets them all.
// Everything happens on the executor, which must be a strand.
class Deadline {
 public:
  Deadline(const boost::asio::any_io_executor& strand, std::function<void()> on_missed)
      : timer_(strand), on_missed_(std::move(on_missed)) {}

  // From now; replaces the deadline before. Zero is none. `owner` holds this object and is kept alive while
  // the timer runs.
  void arm(std::chrono::milliseconds duration, std::shared_ptr<void> owner);
  // For good: nothing is called any more, and the owner is let go.
  void stop();

 private:
  using Clock = std::chrono::steady_clock;
  void watch(std::shared_ptr<void> owner);

  boost::asio::steady_timer timer_;
  std::function<void()> on_missed_;
  Clock::time_point at_ = Clock::time_point::max();
  Clock::time_point timer_at_ = Clock::time_point::max();
  bool stopped_ = false;
};

}  // namespace zelto
