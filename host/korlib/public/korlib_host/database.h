// What is open to databases, so that a host can close it and a test can tell that nothing was leaked.
#pragma once

#include <cstdint>

#include <korlib/types.h>

namespace korlib_host {

// Handles of database drivers in all threads. Connections count from the attempt to connect, idle ones in
// the pools among them.
struct DatabaseHandles {
  std::int64_t connections = 0;
  std::int64_t statements = 0;
  bool operator==(const DatabaseHandles&) const = default;
};
KORLIB_API DatabaseHandles database_handles() noexcept;

// Ends the page that ran on the calling thread: transactions that it began and left open, on a connection
// that outlives it, are rolled back, and the recordsets still open on that connection are ended.
KORLIB_API void roll_back_transactions() noexcept;

// Closes the connections that lie idle in the calling thread's pool.
KORLIB_API void close_idle_connections() noexcept;

}  // namespace korlib_host
