#include "odbc/handle_count.h"

#include <atomic>
#include <cstdint>

#include <korlib_host/database.h>

namespace korlib::odbc {
namespace {

std::atomic<std::int64_t> g_connections{0};
std::atomic<std::int64_t> g_statements{0};

std::atomic<std::int64_t>& counter(Handle handle) {
  return handle == Handle::kConnection ? g_connections : g_statements;
}

}  // namespace

HandleCount::HandleCount(Handle handle) noexcept : handle_(handle) {
  counter(handle_).fetch_add(1, std::memory_order_relaxed);
}

HandleCount::~HandleCount() { counter(handle_).fetch_sub(1, std::memory_order_relaxed); }

}  // namespace korlib::odbc

namespace korlib_host {

DatabaseHandles database_handles() noexcept {
  return {korlib::odbc::g_connections.load(std::memory_order_relaxed),
          korlib::odbc::g_statements.load(std::memory_order_relaxed)};
}

}  // namespace korlib_host
