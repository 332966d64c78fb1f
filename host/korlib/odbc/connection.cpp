#include "odbc/connection.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>

#include "odbc/driver_library.h"
#include "odbc/failure.h"
#include "odbc/statement.h"

namespace korlib::odbc {
namespace {

// Attributes are passed as pointers whose value is the number.
SQLPOINTER number_as_pointer(std::uintptr_t number) {
  return reinterpret_cast<SQLPOINTER>(number);  // NOLINT(performance-no-int-to-ptr): the interface is so
}

}  // namespace

// Each connection has an environment of its own: the driver manager may serialise the calls within one.
Connection::Connection(const std::wstring& connection_string, int timeout_seconds)
    : connection_string_(connection_string), text_(text_of_driver(connection_string)) {
  try {
    check(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_), text_, SQL_HANDLE_ENV, environment_);
    check(SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, number_as_pointer(SQL_OV_ODBC3), 0), text_, SQL_HANDLE_ENV,
          environment_);
    check(SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_), text_, SQL_HANDLE_ENV, environment_);
    SQLSetConnectAttr(connection_, SQL_ATTR_LOGIN_TIMEOUT,
                      number_as_pointer(static_cast<std::uintptr_t>(timeout_seconds)), 0);
    connect();
    is_connected_ = true;
    if (is_sqlite_) find_file();
  } catch (...) {
    if (is_connected_) SQLDisconnect(connection_);
    free_handles();
    throw;
  }
}

void Connection::connect() {
  constexpr std::size_t kMost = 16'384;
  // SQLite's driver waits for locks by itself, 100 seconds long and deaf to a cancellation, unless it is
  // told how long. Told a millisecond, it leaves the wait to the database, where wait_for_locks() sets it,
  // and tries once more.
  is_sqlite_ = library_of(connection_string_).find("sqlite") != std::string::npos;
  lets_clients_wait_ = is_sqlite_ && attribute_of(connection_string_, L"Timeout").empty();
  TextIn text(text_, (lets_clients_wait_ ? L"Timeout=1;" : L"") + connection_string_);
  if (text.size() > kMost) throw Failure({{L"HY090", 0, L"The connection string is too long."}});
  const auto size = static_cast<SQLSMALLINT>(text.size());
  const SQLRETURN result =
      text_ == DriverText::kWide
          ? SQLDriverConnectW(connection_, nullptr, text.wide(), size, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT)
          : SQLDriverConnect(connection_, nullptr, text.bytes(), size, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
  if (SQL_SUCCEEDED(result)) return;
  std::vector<Diagnostic> found = diagnostics_of(text_, SQL_HANDLE_DBC, connection_);
  if (!found.empty()) found.front().text += L" (" + target() + L")";
  throw Failure(std::move(found));
}

void Connection::check_connection(short result) const { check(result, text_, SQL_HANDLE_DBC, connection_); }

// What cannot be connected to: drivers say little more than that they failed. Passwords stay untold.
std::wstring Connection::target() const {
  std::wstring names;
  for (const wchar_t* name : {L"Driver", L"DSN", L"Server", L"Servername", L"Database"}) {
    const std::wstring value = attribute_of(connection_string_, name);
    if (!value.empty()) names.append(names.empty() ? L"" : L", ").append(name).append(L"=").append(value);
  }
  return names.empty() ? L"the connection string names neither Driver nor DSN" : names;
}

// Where the database lives is asked of itself: the connection string may name a data source.
void Connection::find_file() {
  constexpr SQLUSMALLINT kPathColumn = 3;
  char path[4096] = {};
  SQLLEN length = 0;
  SQLCHAR sql[] = "PRAGMA database_list";
  SQLHSTMT statement = nullptr;
  check_connection(SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement));
  const bool is_found = SQL_SUCCEEDED(SQLExecDirect(statement, sql, SQL_NTS)) && SQL_SUCCEEDED(SQLFetch(statement)) &&
                        SQLGetData(statement, kPathColumn, SQL_C_CHAR, path, sizeof path, &length) == SQL_SUCCESS;
  SQLFreeHandle(SQL_HANDLE_STMT, statement);
  if (is_found && length > 0) file_ = DatabaseFile(path);
}

// For what need not succeed.
void Connection::run_quietly(std::string sql) noexcept {
  SQLHSTMT statement = nullptr;
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement))) return;
  SQLExecDirect(statement, reinterpret_cast<SQLCHAR*>(sql.data()), SQL_NTS);
  SQLFreeHandle(SQL_HANDLE_STMT, statement);
}

Connection::~Connection() {
  make_idle();
  if (is_connected_) SQLDisconnect(connection_);
  free_handles();
}

void Connection::free_handles() noexcept {
  if (connection_) SQLFreeHandle(SQL_HANDLE_DBC, connection_);
  if (environment_) SQLFreeHandle(SQL_HANDLE_ENV, environment_);
  connection_ = environment_ = nullptr;
}

void Connection::set_autocommit(bool is_on) {
  const std::uintptr_t value = is_on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF;
  check_connection(SQLSetConnectAttr(connection_, SQL_ATTR_AUTOCOMMIT, number_as_pointer(value), SQL_IS_UINTEGER));
}

void Connection::wait_for_locks(int seconds) {
  if (!lets_clients_wait_ || seconds == lock_seconds_) return;
  constexpr int kLongest = 24 * 3600;
  // For each of the driver's two tries a little less than half the time, so that the error tells of the
  // lock.
  const int milliseconds = (seconds > 0 ? std::min(seconds, kLongest) : kLongest) * 450;
  std::string pragma = "PRAGMA busy_timeout = " + std::to_string(milliseconds);
  SQLHSTMT statement = nullptr;
  check_connection(SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement));
  const SQLRETURN result = SQLExecDirect(statement, reinterpret_cast<SQLCHAR*>(pragma.data()), SQL_NTS);
  SQLFreeHandle(SQL_HANDLE_STMT, statement);
  if (SQL_SUCCEEDED(result)) lock_seconds_ = seconds;
}

void Connection::begin() {
  set_autocommit(false);
  is_in_transaction_ = true;
  remember_transaction(weak_from_this());
}

void Connection::end(short how) {
  check_connection(SQLEndTran(SQL_HANDLE_DBC, connection_, how));
  is_in_transaction_ = false;
  set_autocommit(true);
}

void Connection::commit() { end(SQL_COMMIT); }

void Connection::roll_back() { end(SQL_ROLLBACK); }

void Connection::make_idle() noexcept {
  while (!statements_.empty()) (*statements_.begin())->drop();
  if (is_changed_ && is_connected_) run_quietly("ROLLBACK");  // of what was begun in words
  if (!is_in_transaction_) return;
  try {
    roll_back();
  } catch (const std::exception&) {
    mark_broken();
  }
}

bool Connection::is_usable() {
  if (is_broken_ || is_changed_ || !is_connected_ || file_.is_replaced()) return false;
  SQLUINTEGER is_dead = SQL_CD_FALSE;
  const SQLRETURN result = SQLGetConnectAttr(connection_, SQL_ATTR_CONNECTION_DEAD, &is_dead, SQL_IS_UINTEGER, nullptr);
  return !SQL_SUCCEEDED(result) || is_dead != SQL_CD_TRUE;  // a driver that does not know does not say
}

bool Connection::answers() noexcept {
  if (!is_usable()) return false;
  if (is_sqlite_) return true;  // there is no server that could have gone
  constexpr int kSeconds = 5;
  try {
    std::vector<Parameter> none;
    Statement(std::shared_ptr<Connection>(std::shared_ptr<Connection>(), this), kSeconds).run(L"SELECT 1", none);
  } catch (const Failure& failure) {
    // A database without such a statement has answered all the same.
    if (failure.is_connection_lost() || failure.has_timed_out()) mark_broken();
  } catch (...) {
    mark_broken();
  }
  return is_usable();
}

}  // namespace korlib::odbc
