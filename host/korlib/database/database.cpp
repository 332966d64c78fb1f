// The rows that these classes add to the class table, and what a host may ask of them.
#include <korlib_host/class_table.h>
#include <korlib_host/database.h>

#include "database/command.h"
#include "database/recordset.h"
#include "odbc/connection_pool.h"
#include "odbc/kept_statements.h"
#include "odbc/statement_timer.h"

namespace korlib {
namespace {

constexpr korlib_host::ClassRow kRows[] = {
    {CLSID_KorDBConnection, L"ADODB.Connection", &create_object<Connection>},
    {CLSID_KorDBCommand, L"ADODB.Command", &create_object<Command>},
    {CLSID_KorDBRecordset, L"ADODB.Recordset", &create_object<Recordset>},
};

const korlib_host::ClassRegistration g_classes{kRows};

}  // namespace
}  // namespace korlib

namespace korlib_host {

DatabaseHandles database_handles() noexcept {
  using korlib::odbc::HandleType;
  const std::int64_t kept = korlib::odbc::kept_statements();
  return {open_handles(HandleType::connection), open_handles(HandleType::statement) - kept, kept};
}

void roll_back_transactions() noexcept { korlib::odbc::ConnectionPool::of_this_thread().roll_back_transactions(); }

void set_statement_deadline(std::chrono::steady_clock::time_point deadline) noexcept {
  korlib::odbc::StatementTimer::set_deadline(deadline);
}

void close_idle_connections() noexcept { korlib::odbc::ConnectionPool::of_this_thread().close_idle(); }

}  // namespace korlib_host
