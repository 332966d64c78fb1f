#include "database/statement.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <iterator>

#include "classes/utf16.h"
#include "database/bound_parameter.h"
#include "database/watchdog.h"

namespace korlib::db {
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

std::wstring wide(const SQLWCHAR* units, SQLSMALLINT length, std::size_t room) {
  const std::size_t count = std::min<std::size_t>(static_cast<std::size_t>(std::max<SQLSMALLINT>(length, 0)), room);
  std::wstring text;
  append_utf16(text, {reinterpret_cast<const char16_t*>(units), count});
  return text;
}

}  // namespace

Statement::Statement(std::shared_ptr<Session> session, int timeout_seconds)
    : session_(std::move(session)), timeout_(timeout_seconds) {
  korlib::db::check(SQLAllocHandle(SQL_HANDLE_STMT, session_->handle(), &handle_), SQL_HANDLE_DBC, session_->handle());
  session_->statements_.insert(this);
}

Statement::~Statement() { drop(); }

void Statement::drop() noexcept {
  if (!handle_) return;
  session_->statements_.erase(this);
  SQLFreeHandle(SQL_HANDLE_STMT, handle_);
  handle_ = nullptr;
}

void Statement::need_handle() const {
  if (!handle_) throw Failure({{L"08003", 0, L"The connection was closed."}});
}

void Statement::check(short result) {
  if (SQL_SUCCEEDED(result)) return;
  throw Failure(diagnostics_of(SQL_HANDLE_STMT, handle_));
}

void Statement::run(const std::wstring& sql, std::vector<Parameter>& parameters) {
  need_handle();
  if (sql.find(L'\0') != std::wstring::npos) throw Failure({{L"42000", 0, L"The command text holds a NUL character."}});
  if (parameters.size() > kMostParameters) throw Failure({{L"07001", 0, L"There are too many parameters."}});
  std::u16string units = to_utf16(sql);
  auto* text = reinterpret_cast<SQLWCHAR*>(units.data());
  const auto length = static_cast<SQLINTEGER>(units.size());
  std::vector<BoundParameter> bound(parameters.size());
  const Deadline deadline(handle_, timeout_);
  try {
    SQLRETURN result = SQL_SUCCESS;
    if (parameters.empty()) {
      result = SQLExecDirectW(handle_, text, length);
    } else {
      check(SQLPrepareW(handle_, text, length));
      for (std::size_t i = 0; i < bound.size(); ++i) {
        check(bound[i].bind(handle_, static_cast<unsigned short>(i + 1), parameters[i]));
      }
      result = SQLExecute(handle_);
    }
    if (result != SQL_NO_DATA) check(result);  // an update of no rows
  } catch (const Failure& failure) {
    if (failure.is_connection_lost() || deadline.has_passed()) session_->mark_broken();
    if (deadline.has_passed()) throw Failure({{L"HYT00", 0, L"The command took longer than its time-out."}}, true);
    throw;
  }
  for (std::size_t i = 0; i < bound.size(); ++i) {
    if (parameters[i].direction != Direction::kIn) parameters[i].value = bound[i].result(parameters[i].kind);
  }
  SQLFreeStmt(handle_, SQL_RESET_PARAMS);
  describe();
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
  SQLWCHAR name[256]{};
  SQLSMALLINT length = 0;
  SQLSMALLINT type = 0;
  SQLSMALLINT scale = 0;
  SQLSMALLINT nullable = SQL_NULLABLE_UNKNOWN;
  SQLULEN size = 0;
  check(SQLDescribeColW(handle_, number, name, SQLSMALLINT{std::size(name)}, &length, &type, &size, &scale, &nullable));
  Column column;
  column.name = wide(name, length, std::size(name) - 1);
  column.kind = kind_of(type);
  column.size = size;
  column.scale = scale;
  column.is_nullable = nullable != SQL_NO_NULLS;
  // Some drivers report booleans as text; the type's own name tells.
  SQLWCHAR type_name[64]{};
  SQLSMALLINT bytes = 0;
  if (SQL_SUCCEEDED(SQLColAttributeW(handle_, number, SQL_DESC_TYPE_NAME, type_name, SQLSMALLINT{sizeof type_name},
                                     &bytes, nullptr))) {
    const std::wstring named = wide(type_name, static_cast<SQLSMALLINT>(bytes / 2), std::size(type_name) - 1);
    if (named == L"bool" || named == L"boolean") column.kind = Kind::kBool;
  }
  return column;
}

bool Statement::fetch(Row& row) {
  need_handle();
  const Deadline deadline(handle_, timeout_);
  try {
    const SQLRETURN result = SQLFetch(handle_);
    if (result == SQL_NO_DATA) return false;
    check(result);
    row.clear();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      row.push_back(read(static_cast<unsigned short>(i + 1), columns_[i]));
    }
  } catch (const Failure& failure) {
    if (failure.is_connection_lost() || deadline.has_passed()) session_->mark_broken();
    if (deadline.has_passed()) throw Failure({{L"HYT00", 0, L"The command took longer than its time-out."}}, true);
    throw;
  }
  return true;
}

}  // namespace korlib::db
