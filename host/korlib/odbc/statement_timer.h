// Stops statements that take longer than their time-out.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>

namespace korlib::odbc {

// While it lives, the statement is cancelled once the time is up. 0 seconds: never.
class StatementTimer {
 public:
  StatementTimer(void* statement, int seconds);
  ~StatementTimer();
  StatementTimer(const StatementTimer&) = delete;
  StatementTimer& operator=(const StatementTimer&) = delete;

  bool has_run_out() const { return has_run_out_; }

 private:
  friend class Watchdog;

  void* statement_;
  std::chrono::steady_clock::time_point at_;
  std::atomic<bool> has_run_out_{false};
  bool is_set_;
};

}  // namespace korlib::odbc
