#include "driver_manager.h"

#include <sql.h>
#include <sqlext.h>

namespace {

SQLCHAR* characters(std::string& text) { return reinterpret_cast<SQLCHAR*>(text.data()); }

bool run(SQLHDBC connection, std::string& sql) {
  SQLHSTMT statement = nullptr;
  SQLAllocHandle(SQL_HANDLE_STMT, connection, &statement);
  const bool is_done =
      SQL_SUCCEEDED(SQLExecDirect(statement, characters(sql), SQL_NTS)) && SQL_SUCCEEDED(SQLFetch(statement));
  SQLFreeHandle(SQL_HANDLE_STMT, statement);
  return is_done;
}

}  // namespace

DriverManager::DriverManager() {
  SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_);
  SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION,
                reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3),  // NOLINT(performance-no-int-to-ptr): the interface is so
                0);
}

DriverManager::~DriverManager() { SQLFreeHandle(SQL_HANDLE_ENV, environment_); }

bool DriverManager::connect_and_run(std::string connection_string, std::string sql) const {
  SQLHDBC connection = nullptr;
  SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection);
  bool is_done = SQL_SUCCEEDED(SQLDriverConnect(connection, nullptr, characters(connection_string), SQL_NTS, nullptr, 0,
                                                nullptr, SQL_DRIVER_NOPROMPT));
  if (is_done) {
    is_done = run(connection, sql);
    SQLDisconnect(connection);
  }
  SQLFreeHandle(SQL_HANDLE_DBC, connection);
  return is_done;
}
