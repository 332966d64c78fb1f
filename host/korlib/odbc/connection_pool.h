// The connections that a thread knows of: idle ones, and those with a transaction of its page.
#pragma once

#include <chrono>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "odbc/connection.h"

namespace korlib::odbc {

// One for each thread, so that nothing is locked. At most eight connections lie idle in it; those that have for a
// minute are closed when the thread next takes one or gives one back.
class ConnectionPool {
 public:
  static ConnectionPool& of_this_thread();

  // An idle connection that was made with the same string and still answers, or a new one. Throws Failure.
  std::shared_ptr<Connection> take(const std::wstring& connection_string, int timeout_seconds);
  // One that is broken or changed is closed instead.
  void give_back(std::shared_ptr<Connection> connection) noexcept;
  void close_idle() noexcept { idle_.clear(); }

  // Remembers a connection until roll_back_transactions(), which rolls back what is then still open on it.
  void remember_transaction(const std::shared_ptr<Connection>& connection) { in_transaction_.insert(connection); }
  void roll_back_transactions() noexcept;

 private:
  using Clock = std::chrono::steady_clock;
  struct Idle {
    std::shared_ptr<Connection> connection;
    Clock::time_point since;
  };

  void close_stale();

  std::vector<Idle> idle_;  // the newest last
  std::set<std::weak_ptr<Connection>, std::owner_less<>> in_transaction_;
};

}  // namespace korlib::odbc
