// What other threads hand to a loop.
#pragma once

#include <atomic>
#include <boost/asio/basic_waitable_timer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/basic_stream_descriptor.hpp>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

#include "http/letter.h"

namespace zelto {

// In place of posting: that wakes the loop while it holds the loop's lock, so that where both threads share a processor
// the loop waits for the very thread that woke it, once for each answer. Here it is woken without a lock, and once for
// all letters that come until it looks.
class Mailbox {
 public:
  explicit Mailbox(boost::asio::io_context& io);
  Mailbox(const Mailbox&) = delete;
  Mailbox& operator=(const Mailbox&) = delete;

  // From any thread, to be opened on the loop. Those of one thread are opened in their order. Throws std::bad_alloc.
  void send(Letter letter) { put(std::move(letter), nullptr); }
  // The same of a letter that need not wake the loop, if that looks soon, unless `is_urgent` has been set.
  void leave(Letter letter, const std::atomic<bool>& is_urgent) { put(std::move(letter), &is_urgent); }

  // On the loop, or before it runs: letters are opened from now on. Called again after it, or a handler, has failed.
  void watch();

  // On the loop.
  void open_all();
  // In 2 ms at the latest.
  void look_soon();

 private:
  using Executor = boost::asio::io_context::executor_type;
  using Bell = boost::asio::posix::basic_stream_descriptor<Executor>;
  using Clock = std::chrono::steady_clock;
  using Timer = boost::asio::basic_waitable_timer<Clock, boost::asio::wait_traits<Clock>, Executor>;

  void put(Letter letter, const std::atomic<bool>* is_urgent);

  Bell bell_;  // an eventfd, which rings when there are letters
  std::uint64_t rung_ = 0;
  bool is_watched_ = false;
  std::vector<Letter> opened_;
  Timer timer_;
  std::atomic<bool> looks_soon_ = false;  // cleared before it looks

  std::mutex lock_;  // guards what follows
  std::vector<Letter> letters_;
  bool is_ringing_ = false;
};

}  // namespace zelto
