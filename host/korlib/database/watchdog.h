// Stops statements that take longer than their time-out.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>

namespace korlib::db {

// While it lives, the statement is cancelled once the time is up. 0 seconds: never.
class Deadline {
 public:
  Deadline(void* statement, int seconds);
  ~Deadline();
  Deadline(const Deadline&) = delete;
  Deadline& operator=(const Deadline&) = delete;

  bool has_passed() const { return has_passed_; }

 private:
  friend class Watchdog;

  void* statement_;
  std::chrono::steady_clock::time_point at_;
  std::atomic<bool> has_passed_{false};
  bool is_set_;
};

}  // namespace korlib::db
