// Stops statements that take longer than their time-out.
#pragma once

#include <atomic>
#include <chrono>

namespace korlib::odbc {

// While it lives, the statement is cancelled once the time is up, or the thread's deadline has come. 0 seconds: not
// before that. A driver's own time-out is not
// relied on: not every driver has one.
class StatementTimer {
 public:
  // `statement` is a statement's handle.
  StatementTimer(void* statement, int seconds);
  // The statement is not touched any more when it is gone.
  ~StatementTimer();
  StatementTimer(const StatementTimer&) = delete;
  StatementTimer& operator=(const StatementTimer&) = delete;

  bool has_run_out() const { return has_run_out_; }

  // Of what the calling thread begins from now on.
  static void set_deadline(std::chrono::steady_clock::time_point deadline) noexcept;

 private:
  friend class TimerThread;

  void* statement_;
  std::chrono::steady_clock::time_point at_;
  std::atomic<bool> has_run_out_{false};
  bool is_set_;
};

}  // namespace korlib::odbc
