#include "odbc/connection.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>

#include "base/ascii.h"
#include "odbc/connection_string.h"
#include "odbc/statement.h"
#include "odbc/statement_timer.h"

namespace korlib::odbc {
namespace {

// Attributes are passed as pointers whose value is the number.
SQLPOINTER number_as_pointer(std::uintptr_t number) {
  return reinterpret_cast<SQLPOINTER>(number);  // NOLINT(performance-no-int-to-ptr): the interface is so
}

// The driver manager allocates connections only when it has been told the version that is spoken.
const Handle* of_version_3(const Handle& environment) {
  environment.check(SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION, number_as_pointer(SQL_OV_ODBC3), 0));
  return &environment;
}

// As the connection string says; a day where it does not.
std::chrono::milliseconds longest_lock_wait(std::wstring_view connection_string) {
  constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24);
  const std::wstring given = attribute_of(connection_string, L"Timeout");
  if (given.empty() || given.size() > 9 || !std::ranges::all_of(given, base::is_digit<wchar_t>)) return kLongest;
  return std::min(std::chrono::milliseconds(std::stoi(given)), kLongest);
}

}  // namespace

Connection::Connection(const std::wstring& connection_string, int timeout_seconds)
    : connection_string_(connection_string),
      text_(text_of_driver(connection_string)),
      is_sqlite_(library_of(connection_string).find("sqlite") != std::string::npos),
      longest_lock_wait_(longest_lock_wait(connection_string)),
      environment_(HandleType::environment, nullptr, text_),
      handle_(HandleType::connection, of_version_3(environment_), text_) {
  SQLSetConnectAttr(handle_.get(), SQL_ATTR_LOGIN_TIMEOUT,
                    number_as_pointer(static_cast<std::uintptr_t>(timeout_seconds)), 0);
  connect();
  if (is_sqlite_) file_ = DatabaseFile(handle_, text_);
}

Connection::~Connection() { make_idle(); }

void Connection::connect() {
  constexpr std::size_t kMost = 16'384;
  // SQLite's driver waits for locks by itself, for as long as it is told, else for 100 seconds, and without heeding
  // SQLCancel. Told one millisecond, before any other word about it, it leaves the wait to the database, where
  // wait_for_locks() sets it, and tries once more.
  TextIn text(text_, (is_sqlite_ ? L"Timeout=1;" : L"") + connection_string_);
  if (text.size() > kMost) throw Failure(L"HY090", L"The connection string is too long.");
  const auto size = static_cast<SQLSMALLINT>(text.size());
  const SQLRETURN result =
      text_ == DriverText::wide
          ? SQLDriverConnectW(handle_.get(), nullptr, text.wide(), size, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT)
          : SQLDriverConnect(handle_.get(), nullptr, text.bytes(), size, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
  if (SQL_SUCCEEDED(result)) return;
  std::vector<Diagnostic> found = handle_.diagnostics();
  if (!found.empty()) found.front().text += L" (" + target() + L")";
  throw Failure(std::move(found));
}

// What connecting failed to, for the error's text: drivers say little more than that it failed. No password is in it.
std::wstring Connection::target() const {
  std::wstring names;
  for (const wchar_t* name : {L"Driver", L"DSN", L"Server", L"Servername", L"Database"}) {
    const std::wstring value = attribute_of(connection_string_, name);
    if (!value.empty()) names.append(names.empty() ? L"" : L", ").append(name).append(L"=").append(value);
  }
  return names.empty() ? L"the connection string names neither Driver nor DSN" : names;
}

// Runs a statement that gives nothing back; false when the database refuses it.
bool Connection::run_plainly(std::string sql) const {
  const Handle statement(HandleType::statement, &handle_, text_);
  return SQL_SUCCEEDED(SQLExecDirect(statement.get(), reinterpret_cast<SQLCHAR*>(sql.data()), SQL_NTS));
}

void Connection::set_autocommit(bool is_on) {
  const std::uintptr_t value = is_on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF;
  handle_.check(SQLSetConnectAttr(handle_.get(), SQL_ATTR_AUTOCOMMIT, number_as_pointer(value), SQL_IS_UINTEGER));
}

void Connection::wait_for_locks(int seconds) {
  if (!is_sqlite_) return;
  using std::chrono::milliseconds;
  const milliseconds wait = std::min(StatementTimer::time_left(seconds), longest_lock_wait_);
  // A page's time left is another one for every statement, and telling the database costs as much as one: where this
  // is what counts, what it knows may differ a little, as long as the page is not kept beyond it.
  const bool is_cut = wait < (seconds == 0 ? longest_lock_wait_
                                           : std::min(longest_lock_wait_, milliseconds(std::chrono::seconds(seconds))));
  const bool is_known = is_cut ? lock_wait_ * 9 <= wait * 10 && lock_wait_ * 4 >= wait * 3 : lock_wait_ == wait;
  lock_seconds_ = seconds;
  if (is_known) return;
  // A little less than half the time for each of the driver's two tries, so that the error tells of the
  // lock.
  if (run_plainly("PRAGMA busy_timeout = " + std::to_string((wait * 9 / 20).count()))) lock_wait_ = wait;
}

void Connection::begin() {
  set_autocommit(false);
  is_in_transaction_ = true;
}

void Connection::end(std::int16_t how) {
  DatabaseFile::note_write();
  handle_.check(SQLEndTran(SQL_HANDLE_DBC, handle_.get(), how));
  is_in_transaction_ = false;
  set_autocommit(true);
}

void Connection::commit() {
  if (lock_seconds_ >= 0) wait_for_locks(lock_seconds_);
  end(SQL_COMMIT);
}

void Connection::roll_back() { end(SQL_ROLLBACK); }

void Connection::make_idle() noexcept {
  while (!statements_.empty()) (*statements_.begin())->drop();
  const auto attempt = [this](auto step) {
    try {
      step();
    } catch (const std::exception&) {
      mark_broken();
    }
  };
  if (is_changed_) attempt([this] { run_plainly("ROLLBACK"); });  // of a transaction that a statement began
  if (is_in_transaction_) attempt([this] { roll_back(); });
}

void Connection::forget_kept() noexcept {
  kept_.clear();
  for (Statement* const statement : statements_) statement->forget();
}

bool Connection::is_file_still_the_same() {
  const bool is_replaced = file_.is_replaced();
  if (is_replaced || !file_.is_unchanged()) {
    forget_kept();
    knows_tables_ = false;
  }
  return !is_replaced;
}

void Connection::know_tables() {
  if (!is_sqlite_) return;
  if (!file_.was_just_looked_at()) is_file_still_the_same();
  if (knows_tables_) return;
  SQLCHAR sql[] = "SELECT 1 FROM sqlite_master LIMIT 1";
  const Handle statement(HandleType::statement, &handle_, text_);
  statement.check(SQLExecDirect(statement.get(), sql, SQL_NTS));
  knows_tables_ = true;
}

bool Connection::is_sound() const {
  if (is_broken_ || is_changed_ || (is_sqlite_ && !file_.exists())) return false;
  SQLUINTEGER is_dead = SQL_CD_FALSE;
  const SQLRETURN result =
      SQLGetConnectAttr(handle_.get(), SQL_ATTR_CONNECTION_DEAD, &is_dead, SQL_IS_UINTEGER, nullptr);
  return !SQL_SUCCEEDED(result) || is_dead != SQL_CD_TRUE;  // not every driver can tell
}

bool Connection::is_usable() { return is_sound() && file_.is_there(); }

bool Connection::answers() noexcept {
  if (!is_sound() || !is_file_still_the_same()) return false;
  if (is_sqlite_) return true;  // there is no server that could be gone
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
