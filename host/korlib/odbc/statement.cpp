#include "odbc/statement.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <iterator>

#include "base/letter_case.h"
#include "odbc/bound_parameter.h"
#include "odbc/statement_timer.h"
#include "odbc/statement_words.h"

namespace korlib::odbc {
namespace {

constexpr std::size_t kMostParameters = 32'767;

Kind kind_of(SQLSMALLINT sql_type) {
  switch (sql_type) {
    case SQL_BIT:
      return Kind::kBool;
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
      return Kind::kInteger;
    case SQL_BIGINT:
      return Kind::kBigInteger;
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE:
      return Kind::kReal;
    case SQL_DECIMAL:
    case SQL_NUMERIC:
      return Kind::kDecimal;
    case SQL_TYPE_DATE:
    case SQL_DATE:
      return Kind::kDate;
    case SQL_TYPE_TIME:
    case SQL_TIME:
      return Kind::kTime;
    case SQL_TYPE_TIMESTAMP:
    case SQL_TIMESTAMP:
      return Kind::kMoment;
    case SQL_BINARY:
    case SQL_VARBINARY:
      return Kind::kBinary;
    case SQL_LONGVARBINARY:
      return Kind::kLongBinary;
    case SQL_LONGVARCHAR:
    case SQL_WLONGVARCHAR:
      return Kind::kLongText;
    default:
      return Kind::kText;
  }
}

// Some drivers report booleans and decimals as text or doubles; the type's own name tells.
Kind kind_of_column(SQLSMALLINT sql_type, const std::wstring& type_name, bool is_loose) {
  const auto is_named = [&](std::wstring_view name) { return base::equal_folded(type_name, name); };
  if (is_named(L"bool") || is_named(L"boolean")) return Kind::kBool;
  if (is_loose && (is_named(L"decimal") || is_named(L"numeric") || is_named(L"money"))) return Kind::kDecimal;
  return kind_of(sql_type);
}

}  // namespace

Statement::Statement(std::shared_ptr<Connection> connection, int timeout_seconds)
    : connection_(std::move(connection)), timeout_(timeout_seconds) {
  connection_->check_connection(SQLAllocHandle(SQL_HANDLE_STMT, connection_->handle(), &handle_));
  connection_->statements_.insert(this);
  count_.emplace(Handle::kStatement);
}

Statement::~Statement() { drop(); }

void Statement::drop() noexcept {
  if (!handle_) return;
  connection_->statements_.erase(this);
  SQLFreeHandle(SQL_HANDLE_STMT, handle_);
  handle_ = nullptr;
  count_.reset();
}

void Statement::need_handle() const {
  if (!handle_) throw Failure({{L"08003", 0, L"The connection was closed."}});
}

void Statement::check(short result) {
  if (SQL_SUCCEEDED(result)) return;
  throw Failure(diagnostics_of(connection_->text(), SQL_HANDLE_STMT, handle_));
}

void Statement::run(const std::wstring& sql, std::vector<Parameter>& parameters) {
  need_handle();
  if (sql.find(L'\0') != std::wstring::npos) throw Failure({{L"42000", 0, L"The command text holds a NUL character."}});
  if (parameters.size() > kMostParameters) throw Failure({{L"07001", 0, L"There are too many parameters."}});
  TextIn text(connection_->text(), sql);
  const bool is_wide = connection_->text() == DriverText::kWide;
  const auto length = static_cast<SQLINTEGER>(text.size());
  std::vector<BoundParameter> bound(parameters.size());
  if (may_change_connection(sql)) connection_->mark_changed();
  connection_->wait_for_locks(timeout_);
  const StatementTimer timer(handle_, timeout_);
  try {
    SQLRETURN result = SQL_SUCCESS;
    if (parameters.empty()) {
      result = is_wide ? SQLExecDirectW(handle_, text.wide(), length) : SQLExecDirect(handle_, text.bytes(), length);
    } else {
      check(is_wide ? SQLPrepareW(handle_, text.wide(), length) : SQLPrepare(handle_, text.bytes(), length));
      refuse_surplus(parameters.size());
      for (std::size_t i = 0; i < bound.size(); ++i) {
        check(bound[i].bind(handle_, static_cast<unsigned short>(i + 1), parameters[i]));
      }
      result = SQLExecute(handle_);
    }
    if (result != SQL_NO_DATA) check(result);  // an update of no rows
  } catch (const Failure& failure) {
    if (failure.is_connection_lost() || timer.has_run_out()) connection_->mark_broken();
    if (timer.has_run_out()) throw Failure({{L"HYT00", 0, L"The command took longer than its time-out."}}, true);
    throw;
  }
  for (std::size_t i = 0; i < bound.size(); ++i) {
    if (parameters[i].direction != Direction::kIn) parameters[i].value = bound[i].result(parameters[i].kind);
  }
  SQLFreeStmt(handle_, SQL_RESET_PARAMS);
  describe();
}

// Drivers complain of a parameter without a value, but not all of a value without a parameter.
void Statement::refuse_surplus(std::size_t given) {
  SQLSMALLINT expected = 0;
  if (!SQL_SUCCEEDED(SQLNumParams(handle_, &expected)) || given <= static_cast<std::size_t>(expected)) return;
  throw Failure({{L"07001", 0,
                  L"The command has room for " + std::to_wstring(expected) + L" of the " + std::to_wstring(given) +
                      L" values."}});
}

bool Statement::next_result() {
  need_handle();
  const SQLRETURN result = SQLMoreResults(handle_);
  if (result == SQL_NO_DATA) return false;
  check(result);
  describe();
  return true;
}

void Statement::describe() {
  columns_.clear();
  SQLSMALLINT count = 0;
  check(SQLNumResultCols(handle_, &count));
  SQLLEN rows = -1;
  if (count == 0 && !SQL_SUCCEEDED(SQLRowCount(handle_, &rows))) rows = -1;
  affected_ = rows;
  for (SQLSMALLINT number = 1; number <= count; ++number) {
    columns_.push_back(describe_column(static_cast<unsigned short>(number)));
  }
}

Column Statement::describe_column(unsigned short number) {
  const bool is_wide = connection_->text() == DriverText::kWide;
  TextOut name(connection_->text());
  SQLSMALLINT length = 0;
  SQLSMALLINT type = 0;
  SQLSMALLINT scale = 0;
  SQLSMALLINT nullable = SQL_NULLABLE_UNKNOWN;
  SQLULEN size = 0;
  check(is_wide
            ? SQLDescribeColW(handle_, number, name.wide(), TextOut::kRoom, &length, &type, &size, &scale, &nullable)
            : SQLDescribeCol(handle_, number, name.bytes(), TextOut::kRoom, &length, &type, &size, &scale, &nullable));
  return {name.text(length), kind_of_column(type, type_name(number), connection_->has_loose_types()), size, scale,
          nullable != SQL_NO_NULLS};
}

std::wstring Statement::type_name(unsigned short number) {
  const bool is_wide = connection_->text() == DriverText::kWide;
  TextOut name(connection_->text());
  SQLSMALLINT bytes = 0;
  const SQLRETURN result =
      is_wide ? SQLColAttributeW(handle_, number, SQL_DESC_TYPE_NAME, name.wide(), TextOut::kRoom, &bytes, nullptr)
              : SQLColAttribute(handle_, number, SQL_DESC_TYPE_NAME, name.bytes(), TextOut::kRoom, &bytes, nullptr);
  if (!SQL_SUCCEEDED(result)) return {};
  return name.text(is_wide ? static_cast<SQLSMALLINT>(bytes / 2) : bytes);
}

bool Statement::fetch(Row& row) {
  need_handle();
  const StatementTimer timer(handle_, timeout_);
  try {
    const SQLRETURN result = SQLFetch(handle_);
    if (result == SQL_NO_DATA) return false;
    check(result);
    row.clear();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      row.push_back(read(static_cast<unsigned short>(i + 1), columns_[i]));
    }
  } catch (const Failure& failure) {
    if (failure.is_connection_lost() || timer.has_run_out()) connection_->mark_broken();
    if (timer.has_run_out()) throw Failure({{L"HYT00", 0, L"The command took longer than its time-out."}}, true);
    throw;
  }
  return true;
}

}  // namespace korlib::odbc
