// A connection to a database, as the pool keeps it.
#pragma once

#include <chrono>
#include <memory>
#include <set>
#include <string>

#include "odbc/database_file.h"
#include "odbc/driver_text.h"
#include "odbc/handle_count.h"

namespace korlib::odbc {

class Statement;

// Serves one thread at a time. Statements hold their connection.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  // Throws Failure.
  Connection(const std::wstring& connection_string, int timeout_seconds);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  const std::wstring& connection_string() const { return connection_string_; }
  void* handle() const { return connection_; }
  DriverText text() const { return text_; }

  void begin();
  void commit();
  void roll_back();
  bool is_in_transaction() const { return is_in_transaction_; }

  // How long a statement waits for another's lock, where the database leaves that to its clients; 0 is
  // without end.
  void wait_for_locks(int seconds);

  // Whether a column's type says no more than what its values usually are.
  bool has_loose_types() const { return is_sqlite_; }

  // Ends what is still running on it: the statements' handles go, an open transaction is rolled back.
  void make_idle() noexcept;
  void mark_broken() { is_broken_ = true; }
  // It is not as a new one is: nobody is to get it next.
  void mark_changed() { is_changed_ = true; }
  bool is_usable();
  // Asks the database, which may have gone since it was last heard of.
  bool answers() noexcept;

 private:
  friend class Statement;
  void end(short how);
  void set_autocommit(bool is_on);
  void connect();
  std::wstring target() const;
  void find_file();
  void run_quietly(std::string sql) noexcept;
  void check_connection(short result) const;
  void free_handles() noexcept;

  std::wstring connection_string_;
  DriverText text_;
  void* environment_ = nullptr;
  void* connection_ = nullptr;
  std::set<Statement*> statements_;
  DatabaseFile file_;
  const HandleCount count_{Handle::kConnection};
  int lock_seconds_ = -1;
  bool is_sqlite_ = false;
  bool lets_clients_wait_ = false;
  bool is_connected_ = false;
  bool is_in_transaction_ = false;
  bool is_broken_ = false;
  bool is_changed_ = false;
};

// A connection from the calling thread's pool, or a new one. Throws Failure.
std::shared_ptr<Connection> take_connection(const std::wstring& connection_string, int timeout_seconds);
// Into the calling thread's pool; a connection that is broken or changed is closed instead. What has lain
// idle for a minute is closed when the thread next takes or gives back a connection.
void give_back(std::shared_ptr<Connection> connection) noexcept;
// Until the calling thread's page ends, when what is still open is rolled back.
void remember_transaction(std::weak_ptr<Connection> connection);

}  // namespace korlib::odbc
