#include "database/session.h"

#include <sql.h>
#include <sqlext.h>

#include "classes/utf16.h"
#include "database/failure.h"
#include "database/statement.h"

namespace korlib::db {

// Each session has an environment of its own: the driver manager may serialise the calls within one.
Session::Session(const std::wstring& connection_string, int timeout_seconds) : connection_string_(connection_string) {
  try {
    check(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_), SQL_HANDLE_ENV, environment_);
    check(SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0),
          SQL_HANDLE_ENV, environment_);
    check(SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_), SQL_HANDLE_ENV, environment_);
    const auto timeout = static_cast<std::uintptr_t>(timeout_seconds);
    SQLSetConnectAttrW(connection_, SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(timeout), 0);
    std::u16string units = to_utf16(connection_string);
    constexpr std::size_t kMostUnits = 16 * 1024;
    if (units.size() > kMostUnits) throw Failure({{L"HY090", 0, L"The connection string is too long."}});
    check(SQLDriverConnectW(connection_, nullptr, reinterpret_cast<SQLWCHAR*>(units.data()),
                            static_cast<SQLSMALLINT>(units.size()), nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT),
          SQL_HANDLE_DBC, connection_);
    is_connected_ = true;
  } catch (...) {
    free_handles();
    throw;
  }
}

Session::~Session() {
  make_idle();
  if (is_connected_) SQLDisconnect(connection_);
  free_handles();
}

void Session::free_handles() noexcept {
  if (connection_) SQLFreeHandle(SQL_HANDLE_DBC, connection_);
  if (environment_) SQLFreeHandle(SQL_HANDLE_ENV, environment_);
  connection_ = environment_ = nullptr;
}

void Session::set_autocommit(bool is_on) {
  const std::uintptr_t value = is_on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF;
  check(SQLSetConnectAttrW(connection_, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(value), SQL_IS_UINTEGER),
        SQL_HANDLE_DBC, connection_);
}

void Session::begin() {
  set_autocommit(false);
  is_in_transaction_ = true;
}

void Session::end(short how) {
  check(SQLEndTran(SQL_HANDLE_DBC, connection_, how), SQL_HANDLE_DBC, connection_);
  is_in_transaction_ = false;
  set_autocommit(true);
}

void Session::commit() { end(SQL_COMMIT); }

void Session::roll_back() { end(SQL_ROLLBACK); }

void Session::make_idle() noexcept {
  while (!statements_.empty()) (*statements_.begin())->drop();
  if (!is_in_transaction_) return;
  try {
    roll_back();
  } catch (const std::exception&) {
    mark_broken();
  }
}

bool Session::is_usable() const {
  if (is_broken_ || !is_connected_) return false;
  SQLUINTEGER is_dead = SQL_CD_FALSE;
  const SQLRETURN result =
      SQLGetConnectAttrW(connection_, SQL_ATTR_CONNECTION_DEAD, &is_dead, SQL_IS_UINTEGER, nullptr);
  return !SQL_SUCCEEDED(result) || is_dead != SQL_CD_TRUE;  // a driver that does not know does not say
}

}  // namespace korlib::db
