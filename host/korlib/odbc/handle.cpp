#include "odbc/handle.h"

#include <sql.h>
#include <sqlext.h>

#include <atomic>

namespace korlib::odbc {
namespace {

static_assert(static_cast<short>(HandleType::environment) == SQL_HANDLE_ENV &&
              static_cast<short>(HandleType::connection) == SQL_HANDLE_DBC &&
              static_cast<short>(HandleType::statement) == SQL_HANDLE_STMT);

std::atomic<std::int64_t> g_open[4];  // by type

std::atomic<std::int64_t>& count_of(HandleType type) { return g_open[static_cast<int>(type)]; }

}  // namespace

Handle::Handle(HandleType type, const Handle* parent, DriverText way) : type_(type), way_(way) {
  const SQLHANDLE above = parent ? parent->get() : SQL_NULL_HANDLE;
  if (!SQL_SUCCEEDED(SQLAllocHandle(static_cast<SQLSMALLINT>(type), above, &handle_))) {
    throw Failure(parent ? parent->diagnostics() : std::vector<Diagnostic>());
  }
  count_of(type_).fetch_add(1, std::memory_order_relaxed);
}

void Handle::free() noexcept {
  if (!handle_) return;
  if (type_ == HandleType::connection) SQLDisconnect(handle_);
  SQLFreeHandle(static_cast<SQLSMALLINT>(type_), handle_);
  handle_ = nullptr;
  count_of(type_).fetch_sub(1, std::memory_order_relaxed);
}

void Handle::check(std::int16_t result) const {
  if (!SQL_SUCCEEDED(result)) throw Failure(diagnostics());
}

std::vector<Diagnostic> Handle::diagnostics() const {
  constexpr SQLSMALLINT kMost = 20;
  constexpr SQLSMALLINT kStateLength = 5;
  const auto type = static_cast<SQLSMALLINT>(type_);
  std::vector<Diagnostic> found;
  for (SQLSMALLINT number = 1; number <= kMost; ++number) {
    TextOut state(way_);
    TextOut text(way_);
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    const SQLRETURN result =
        way_ == DriverText::wide
            ? SQLGetDiagRecW(type, handle_, number, state.wide(), &native, text.wide(), TextOut::kRoom, &length)
            : SQLGetDiagRec(type, handle_, number, state.bytes(), &native, text.bytes(), TextOut::kRoom, &length);
    if (!SQL_SUCCEEDED(result)) break;
    found.push_back({state.text(kStateLength), native, text.text(length), true});
  }
  return found;
}

std::int64_t open_handles(HandleType type) noexcept { return count_of(type).load(std::memory_order_relaxed); }

}  // namespace korlib::odbc
