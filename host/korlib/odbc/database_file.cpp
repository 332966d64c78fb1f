#include "odbc/database_file.h"

#include <sql.h>
#include <sqlext.h>

#include <atomic>

namespace korlib::odbc {
namespace {

constexpr std::chrono::milliseconds kJust{1};

std::atomic<std::uint64_t> g_writes{0};

}  // namespace

// The database itself is asked for its place: the connection string may name a data source.
DatabaseFile::DatabaseFile(const Handle& connection, DriverText way) {
  constexpr SQLUSMALLINT kPathColumn = 3;
  char path[4096] = {};
  SQLLEN length = 0;
  SQLCHAR sql[] = "PRAGMA database_list";
  const Handle statement(HandleType::statement, &connection, way);
  const SQLHSTMT handle = statement.get();
  const bool is_found = SQL_SUCCEEDED(SQLExecDirect(handle, sql, SQL_NTS)) && SQL_SUCCEEDED(SQLFetch(handle)) &&
                        SQLGetData(handle, kPathColumn, SQL_C_CHAR, path, sizeof path, &length) == SQL_SUCCESS;
  if (is_found && length > 0) {
    path_ = path;
    log_path_ = path_ + "-wal";
  }
  is_replaced();
}

std::optional<DatabaseFile::Identity> DatabaseFile::look(struct stat* found) {
  std::optional<Identity> present;
  if (stat(path_.c_str(), found) == 0) present = Identity{found->st_dev, found->st_ino};
  if (!first_seen_) first_seen_ = present;
  return present;
}

bool DatabaseFile::is_there() {
  struct stat found = {};
  return path_.empty() || look(&found) == first_seen_;
}

bool DatabaseFile::is_replaced() {
  if (path_.empty()) return false;
  looked_at_ = std::chrono::steady_clock::now();
  writes_seen_ = g_writes;
  struct stat found = {};
  const std::optional<Identity> present = look(&found);
  struct stat log = {};
  if (stat(log_path_.c_str(), &log) != 0) log = {};
  const auto stamp = base::FileStamp::of(found);
  const auto log_stamp = base::FileStamp::of(log);
  is_unchanged_ = was_settled_ && stamp == stamp_ && log_stamp == log_stamp_;
  was_settled_ = stamp.is_settled() && log_stamp.is_settled();
  stamp_ = stamp;
  log_stamp_ = log_stamp;
  return first_seen_ != present;
}

bool DatabaseFile::was_just_looked_at() const {
  return writes_seen_ == g_writes && std::chrono::steady_clock::now() - looked_at_ < kJust;
}

void DatabaseFile::note_write() noexcept { ++g_writes; }

}  // namespace korlib::odbc
