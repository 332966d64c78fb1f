// What is open to databases, so that a host can close it and a test can tell that nothing was leaked.
//
// Connections belong to threads: one that a page lets go lies idle in its thread's pool, for a later page with the same
// connection string. At most eight lie there; those that have for a minute are closed when the thread next takes a
// connection or lets one go, and all of them when it ends.
//
// A host calls roll_back_transactions() on the thread that ran a page, when the page's objects have been released and
// before the next page begins. It may call close_idle_connections() on a thread that will run no page for a while.
#pragma once

#include <chrono>
#include <cstdint>

#include <korlib/types.h>

namespace korlib_host {

// Handles of database drivers in all threads. Connections count from the attempt to connect, idle ones in the pools
// among them; statements from their making until they are freed, run or not, but for queries that are over and stay
// prepared with their connection, which count for themselves.
struct DatabaseHandles {
  std::int64_t connections = 0;
  std::int64_t statements = 0;
  std::int64_t kept_queries = 0;
  bool operator==(const DatabaseHandles&) const = default;
};
// As they are now; other threads may have changed them when the caller looks.
KORLIB_API DatabaseHandles database_handles() noexcept;

// Ends the page that ran on the calling thread: transactions that it began and left open, on a connection that outlives
// it, are rolled back, and the recordsets still open on that connection are ended. A
// connection whose roll-back fails is not used for another page.
KORLIB_API void roll_back_transactions() noexcept;

// Until when the page on the calling thread may run: what a statement of its does then is cancelled, whatever its own
// time-out. time_point::max() is without end, as at first.
KORLIB_API void set_statement_deadline(std::chrono::steady_clock::time_point deadline) noexcept;

// Closes the connections that lie idle in the calling thread's pool. Those in use stay, and return to the pool.
KORLIB_API void close_idle_connections() noexcept;

}  // namespace korlib_host
