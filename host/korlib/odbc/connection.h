// A connection to a database, as the pool keeps it.
#pragma once

#include <chrono>
#include <memory>
#include <set>
#include <string>

#include "odbc/database_file.h"
#include "odbc/handle.h"
#include "odbc/kept_statements.h"

namespace korlib::odbc {

class Statement;

// Serves one thread at a time. Statements hold their connection. What can fail throws Failure.
class Connection {
 public:
  // Connects; a driver that knows time-outs gives up after that many seconds, 0 being without end.
  Connection(const std::wstring& connection_string, int timeout_seconds);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  const std::wstring& connection_string() const { return connection_string_; }
  const Handle& handle() const { return handle_; }
  DriverText text() const { return text_; }

  void begin();
  void commit();
  void roll_back();
  bool is_in_transaction() const { return is_in_transaction_; }

  // How many seconds a statement waits for another's lock, where the database leaves that to its clients; 0 is
  // without end. It is less when the page on the thread has less time left.
  void wait_for_locks(int seconds);

  // Whether columns may hold values of other types than their own, as SQLite's may.
  bool has_loose_types() const { return is_sqlite_; }

  // Whether its queries stay prepared for the next ones of the same text.
  bool keeps_statements() const { return is_sqlite_; }

  // Ends what is still running on it: statements lose their handles, an open transaction is rolled back.
  void make_idle() noexcept;
  void mark_broken() { is_broken_ = true; }
  // Its settings may differ from a new connection's: the pool must not hand it out again.
  void mark_changed() { is_changed_ = true; }
  bool is_usable();
  // Whether the database is still there: its file is looked at, a server is asked "SELECT 1".
  bool answers() noexcept;

 private:
  friend class Statement;
  void connect();
  std::wstring target() const;
  void end(std::int16_t how);
  void set_autocommit(bool is_on);
  // As far as it knows itself.
  bool is_sound() const;
  bool run_plainly(std::string sql) const;
  // No query that was prepared until now is run again.
  void forget_kept() noexcept;
  // Looks at the file; where it was written to, they are forgotten.
  bool is_file_still_the_same();
  // Before a query: where the file was written to, the tables may be others. The driver takes the types of columns from
  // what the database knows of them when it prepares the query, and the database looks only when it runs. Throws
  // Failure.
  void know_tables();

  const std::wstring connection_string_;
  const DriverText text_;
  const bool is_sqlite_;
  const std::chrono::milliseconds longest_lock_wait_;
  // Each connection has an environment of its own: the driver manager may serialise the calls within one.
  const Handle environment_;
  const Handle handle_;
  std::set<Statement*> statements_;
  KeptStatements kept_;
  DatabaseFile file_;
  int lock_seconds_ = -1;                   // as asked for
  std::chrono::milliseconds lock_wait_{0};  // as the database knows it
  bool knows_tables_ = false;
  bool is_in_transaction_ = false;
  bool is_broken_ = false;
  bool is_changed_ = false;
};

}  // namespace korlib::odbc
