#include "odbc/connection_pool.h"

namespace korlib::odbc {
namespace {

constexpr std::size_t kMostIdle = 8;
constexpr std::chrono::seconds kIdleTime{60};

}  // namespace

ConnectionPool& ConnectionPool::of_this_thread() {
  static thread_local ConnectionPool pool;
  return pool;
}

void ConnectionPool::close_stale() {
  const Clock::time_point oldest = Clock::now() - kIdleTime;
  std::erase_if(idle_, [&](const Idle& idle) { return idle.since < oldest; });
  if (idle_.size() > kMostIdle) idle_.erase(idle_.begin(), idle_.end() - kMostIdle);
}

std::shared_ptr<Connection> ConnectionPool::take(const std::wstring& connection_string, int timeout_seconds) {
  close_stale();
  for (std::size_t i = idle_.size(); i-- > 0;) {
    if (idle_[i].connection->connection_string() != connection_string) continue;
    std::shared_ptr<Connection> connection = std::move(idle_[i].connection);
    idle_.erase(idle_.begin() + static_cast<std::ptrdiff_t>(i));
    if (connection->answers()) return connection;
  }
  return std::make_shared<Connection>(connection_string, timeout_seconds);
}

void ConnectionPool::give_back(std::shared_ptr<Connection> connection) noexcept {
  connection->make_idle();
  if (!connection->is_usable()) return;
  try {
    idle_.push_back({std::move(connection), Clock::now()});
    close_stale();
  } catch (const std::exception&) {
    return;  // no memory to remember it: it is closed
  }
}

void ConnectionPool::roll_back_transactions() noexcept {
  for (const std::weak_ptr<Connection>& each : in_transaction_) {
    const std::shared_ptr<Connection> connection = each.lock();
    if (connection && connection->is_in_transaction()) connection->make_idle();
  }
  in_transaction_.clear();
}

}  // namespace korlib::odbc
