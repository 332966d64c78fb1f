#include "odbc/statement.h"

#include <sql.h>
#include <sqlext.h>

#include <korlib_host/statement_listener.h>

#include <algorithm>
#include <utility>

#include "base/ascii.h"
#include "base/letter_case.h"
#include "odbc/bound_parameter.h"
#include "odbc/statement_timer.h"

namespace korlib::odbc {
namespace {

constexpr std::size_t kMostParameters = 32'767;

constinit thread_local korlib_host::StatementListener* t_listener = nullptr;

// Tells the thread's listener of a statement when that is over.
class Told {
 public:
  using Clock = std::chrono::steady_clock;

  explicit Told(std::wstring_view sql) : sql_(sql), began_(t_listener ? Clock::now() : Clock::time_point()) {}
  ~Told() {
    if (t_listener) t_listener->on_statement(sql_, Clock::now() - began_);
  }
  Told(const Told&) = delete;
  Told& operator=(const Told&) = delete;

 private:
  const std::wstring_view sql_;
  const Clock::time_point began_;
};

constexpr std::wstring_view kHarmless[] = {L"ALTER",   L"ANALYZE",  L"CALL",   L"COMMENT", L"COMMIT",  L"CREATE",
                                           L"DELETE",  L"DESCRIBE", L"DROP",   L"END",     L"EXEC",    L"EXECUTE",
                                           L"EXPLAIN", L"GRANT",    L"INSERT", L"MERGE",   L"REINDEX", L"REPLACE",
                                           L"REVOKE",  L"ROLLBACK", L"SELECT", L"SHOW",    L"TABLE",   L"TRUNCATE",
                                           L"UPDATE",  L"VACUUM",   L"VALUES", L"WITH"};

// The length of a quoted text or a comment that `sql` begins with; 0 when it begins with neither. One
// without an end goes to the end of the text.
std::size_t passage(std::wstring_view sql) {
  static constexpr std::pair<std::wstring_view, std::wstring_view> kPairs[] = {
      {L"'", L"'"}, {L"\"", L"\""}, {L"`", L"`"}, {L"[", L"]"}, {L"--", L"\n"}, {L"/*", L"*/"}};
  for (const auto& [open, close] : kPairs) {
    if (!sql.starts_with(open)) continue;
    const std::size_t end = sql.find(close, open.size());
    return end == std::wstring_view::npos ? sql.size() : end + close.size();
  }
  return 0;
}

bool is_harmless(std::wstring_view word) {
  return std::ranges::any_of(kHarmless, [&](std::wstring_view known) { return base::equal_folded(word, known); });
}

// Whether a command text may leave its connection changed for whoever uses it next: a transaction that
// it begins, an isolation level, a setting, an attached database. Every statement counts that does not begin with one
// of the known words for data and tables. What the functions do that a SELECT calls is not looked at.
bool may_change_connection(std::wstring_view sql) {
  bool is_at_start = true;
  for (std::size_t at = 0; at < sql.size();) {
    if (const std::size_t skipped = passage(sql.substr(at)); skipped > 0) {
      at += skipped;
      continue;
    }
    if (is_at_start && base::is_letter(sql[at])) {
      const auto* const end = std::find_if_not(sql.begin() + at, sql.end(), base::is_letter<wchar_t>);
      if (!is_harmless({sql.begin() + at, end})) return true;
      is_at_start = false;
    }
    if (sql[at] == L';') is_at_start = true;
    ++at;
  }
  return false;
}

// All drivers report a parameter without a value, but not all of them a value without a parameter.
void refuse_surplus(const Handle& statement, std::size_t given) {
  SQLSMALLINT expected = 0;
  if (!SQL_SUCCEEDED(SQLNumParams(statement.get(), &expected)) || given <= static_cast<std::size_t>(expected)) return;
  throw Failure(L"07001", L"The command has room for " + std::to_wstring(expected) + L" of the " +
                              std::to_wstring(given) + L" values.");
}

}  // namespace

Statement::Statement(std::shared_ptr<Connection> connection, int timeout_seconds)
    : connection_(std::move(connection)), timeout_(timeout_seconds) {
  connection_->statements_.insert(this);
}

void Statement::drop() noexcept {
  connection_->statements_.erase(this);
  is_dropped_ = true;
  if (handle_ && !keep_as_.empty()) connection_->kept_.keep(std::move(keep_as_), {std::move(handle_), columns_});
  handle_.reset();
}

void Statement::need_handle() const {
  if (is_dropped_ || !handle_) throw Failure(L"08003", L"The connection was closed.");
}

template <class Body>
auto Statement::within_timeout(Body body) {
  StatementTimer timer(handle_->get(), timeout_);
  // A cancellation may reach the server when the statement is over, and would hit the connection's next one.
  const struct Mark {
    StatementTimer& timer;
    Connection& connection;
    ~Mark() {
      timer.stop();
      if (timer.has_cancelled()) connection.mark_broken();
    }
  } mark{timer, *connection_};
  try {
    return body();
  } catch (const Failure& failure) {
    timer.stop();
    keep_as_.clear();
    if (failure.is_connection_lost()) connection_->mark_broken();
    if (timer.has_cancelled()) timer.fail();
    throw;
  }
}

void Statement::run(const std::wstring& sql, std::vector<Parameter>& parameters) {
  if (is_dropped_) need_handle();
  if (sql.find(L'\0') != std::wstring::npos) throw Failure(L"42000", L"The command text holds a NUL character.");
  if (parameters.size() > kMostParameters) throw Failure(L"07001", L"There are too many parameters.");
  const Told told(sql);
  const bool is_one_query = may_be_kept(sql);
  if (!is_one_query && may_change_connection(sql)) connection_->mark_changed();
  connection_->wait_for_locks(timeout_);
  if (is_query(sql)) connection_->know_tables();
  const bool is_kept = connection_->keeps_statements() && is_one_query;
  if (!is_kept) {
    connection_->forget_kept();  // what it changes may be what those were prepared for
    DatabaseFile::note_write();
  }
  Bound bound(parameters.size());
  const bool runs_again = is_kept && run_kept(sql, parameters, bound);
  if (!runs_again) run_fresh(sql, parameters, bound, is_kept);
  for (std::size_t i = 0; i < bound.size(); ++i) {
    if (parameters[i].direction != Direction::in) parameters[i].value = bound[i].result(parameters[i].kind);
  }
  SQLFreeStmt(handle_->get(), SQL_RESET_PARAMS);
  if (!runs_again) describe();
  if (runs_again || (is_kept && (counts_rows(sql) || are_columns_of_tables(*handle_, columns_->size()))))
    keep_as_ = sql;
}

// False when there is none of that text, or when it fails: a table that is another one by now makes it do so.
bool Statement::run_kept(const std::wstring& sql, const std::vector<Parameter>& parameters, Bound& bound) {
  constexpr int kBusy = 5;  // SQLite's codes for locks, which have been waited for
  constexpr int kLocked = 6;
  auto kept = connection_->kept_.take(sql);
  if (!kept.handle) return false;
  handle_ = std::move(kept.handle);
  columns_ = std::move(kept.columns);
  try {
    within_timeout([&] { execute(parameters, bound); });
    return true;
  } catch (const Failure& failure) {
    const int code = failure.diagnostics().front().native;
    if (connection_->is_broken_ || code == kBusy || code == kLocked) throw;
    return false;
  }
}

void Statement::run_fresh(const std::wstring& sql, const std::vector<Parameter>& parameters, Bound& bound,
                          bool is_kept) {
  handle_ = std::make_unique<Handle>(HandleType::statement, &connection_->handle(), connection_->text());
  TextIn text(connection_->text(), sql);
  const bool is_wide = connection_->text() == DriverText::wide;
  const auto length = static_cast<SQLINTEGER>(text.size());
  const SQLHSTMT handle = handle_->get();
  within_timeout([&] {
    if (parameters.empty() && !is_kept) {
      return check_run(is_wide ? SQLExecDirectW(handle, text.wide(), length)
                               : SQLExecDirect(handle, text.bytes(), length));
    }
    handle_->check(is_wide ? SQLPrepareW(handle, text.wide(), length) : SQLPrepare(handle, text.bytes(), length));
    execute(parameters, bound);
  });
}

void Statement::execute(const std::vector<Parameter>& parameters, Bound& bound) {
  if (!parameters.empty()) refuse_surplus(*handle_, parameters.size());
  for (std::size_t i = 0; i < bound.size(); ++i)
    handle_->check(bound[i].bind(handle_->get(), static_cast<unsigned short>(i + 1), parameters[i]));
  check_run(SQLExecute(handle_->get()));
}

void Statement::check_run(std::int16_t result) const {
  if (result != SQL_NO_DATA) handle_->check(result);  // SQL_NO_DATA: an update of no rows
}

bool Statement::next_result() {
  need_handle();
  keep_as_.clear();
  return within_timeout([&] {
    const SQLRETURN result = SQLMoreResults(handle_->get());
    if (result == SQL_NO_DATA) return false;
    handle_->check(result);
    describe();
    return true;
  });
}

void Statement::describe() {
  columns_ = describe_columns(*handle_, connection_->text(), connection_->has_loose_types());
  SQLLEN rows = -1;
  if (columns_->empty() && !SQL_SUCCEEDED(SQLRowCount(handle_->get(), &rows))) rows = -1;
  affected_ = rows;
}

bool Statement::fetch(Row& row) {
  need_handle();
  return within_timeout([&] {
    const SQLRETURN result = SQLFetch(handle_->get());
    if (result == SQL_NO_DATA) return false;
    handle_->check(result);
    row.clear();
    for (const Column& column : *columns_) {
      const auto number = static_cast<SQLUSMALLINT>(row.size() + 1);
      row.push_back(read_value(*handle_, number, column, connection_->has_loose_types()));
    }
    return true;
  });
}

}  // namespace korlib::odbc

void korlib_host::set_statement_listener(StatementListener* listener) noexcept { korlib::odbc::t_listener = listener; }

korlib_host::StatementListener* korlib_host::statement_listener() noexcept { return korlib::odbc::t_listener; }
