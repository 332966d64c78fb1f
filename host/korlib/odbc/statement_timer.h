// Stops statements that take longer than their time-out, or more memory than their page may.
#pragma once

#include <atomic>
#include <chrono>

#include <korlib_host/memory_limit.h>

namespace korlib::odbc {

// While it lives, the statement is cancelled once the time is up, or the thread's deadline has come, or its page has
// taken too much memory: some drivers read all rows at once. 0 seconds: not before that. A driver's own time-out is not
// relied on: not every driver has one.
class StatementTimer {
 public:
  // `statement` is a statement's handle.
  StatementTimer(void* statement, int seconds);
  ~StatementTimer() { stop(); }
  StatementTimer(const StatementTimer&) = delete;
  StatementTimer& operator=(const StatementTimer&) = delete;

  // From here on the statement is not touched any more.
  void stop() noexcept;
  // For good once it has been stopped.
  bool has_cancelled() const { return cause_ != Cause::none; }
  // In the words for the reason why the statement was cancelled.
  [[noreturn]] void fail() const;

  // Of what the calling thread begins from now on.
  static void set_deadline(std::chrono::steady_clock::time_point deadline) noexcept;
  // How long a statement of the calling thread may take from now on, the smaller of `seconds` and what is left until
  // the deadline; 0 seconds is without end, and so is the greatest duration.
  static std::chrono::milliseconds time_left(int seconds) noexcept;

 private:
  friend class TimerThread;
  using Clock = std::chrono::steady_clock;
  enum class Cause { none, time, memory };

  // On the timers' thread, at the time that next_look() gave: why the statement has to be cancelled.
  Cause look(Clock::time_point now) const;
  Clock::time_point next_look(Clock::time_point now) const;

  void* statement_;
  const Clock::time_point end_;
  korlib_host::MemoryLimit* const memory_;
  Clock::time_point at_{};  // the next look, for the timers' thread once it has been added there
  std::atomic<Cause> cause_{Cause::none};
  bool is_set_ = false;
};

}  // namespace korlib::odbc
