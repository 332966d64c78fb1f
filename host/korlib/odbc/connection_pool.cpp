// The connections that each thread knows of: idle ones, and those with a transaction of its page.
#include <algorithm>
#include <set>
#include <vector>

#include <korlib_host/database.h>

#include "odbc/connection.h"

namespace korlib::odbc {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostIdle = 8;
constexpr std::chrono::seconds kIdleTime{60};

struct Idle {
  std::shared_ptr<Connection> connection;
  Clock::time_point since;
};

// Ordered by the time of giving back, the newest last.
thread_local std::vector<Idle> t_idle;

thread_local std::set<std::weak_ptr<Connection>, std::owner_less<>> t_in_transaction;

void close_stale() {
  const Clock::time_point oldest = Clock::now() - kIdleTime;
  std::erase_if(t_idle, [&](const Idle& idle) { return idle.since < oldest; });
  if (t_idle.size() > kMostIdle) t_idle.erase(t_idle.begin(), t_idle.end() - kMostIdle);
}

}  // namespace

std::shared_ptr<Connection> take_connection(const std::wstring& connection_string, int timeout_seconds) {
  close_stale();
  for (std::size_t i = t_idle.size(); i-- > 0;) {
    if (t_idle[i].connection->connection_string() != connection_string) continue;
    std::shared_ptr<Connection> connection = std::move(t_idle[i].connection);
    t_idle.erase(t_idle.begin() + static_cast<std::ptrdiff_t>(i));
    if (connection->answers()) return connection;
  }
  return std::make_shared<Connection>(connection_string, timeout_seconds);
}

void give_back(std::shared_ptr<Connection> connection) noexcept {
  connection->make_idle();
  if (!connection->is_usable()) return;
  try {
    t_idle.push_back({std::move(connection), Clock::now()});
    close_stale();
  } catch (const std::exception&) {
    return;  // no memory to remember it: it is closed
  }
}

void remember_transaction(std::weak_ptr<Connection> connection) { t_in_transaction.insert(std::move(connection)); }

}  // namespace korlib::odbc

namespace korlib_host {

void roll_back_transactions() noexcept {
  for (const std::weak_ptr<korlib::odbc::Connection>& each : korlib::odbc::t_in_transaction) {
    const std::shared_ptr<korlib::odbc::Connection> connection = each.lock();
    if (connection && connection->is_in_transaction()) connection->make_idle();
  }
  korlib::odbc::t_in_transaction.clear();
}

void close_idle_connections() noexcept { korlib::odbc::t_idle.clear(); }

}  // namespace korlib_host
