#include "database/connection.h"

#include "database/convert.h"
#include "database/errors.h"
#include "database/recordset.h"
#include "database/refused_statement.h"
#include "odbc/connection_pool.h"
#include "odbc/connection_string.h"

namespace korlib {

std::span<const Member> Connection::members() {
  static constexpr Member table[] = {
      property<&Connection::get_ConnectionString, &Connection::put_ConnectionString>(L"ConnectionString").is_default(),
      method<&Connection::Open>(L"Open").optional(0, 0, 0, -1),
      method<&Connection::Close>(L"Close"),
      method<&Connection::Execute>(L"Execute").optional(0, -1),
      method<&Connection::BeginTrans>(L"BeginTrans"),
      method<&Connection::CommitTrans>(L"CommitTrans"),
      method<&Connection::RollbackTrans>(L"RollbackTrans"),
      property<&Connection::get_State>(L"State"),
      property<&Connection::get_CommandTimeout, &Connection::put_CommandTimeout>(L"CommandTimeout"),
      property<&Connection::get_ConnectionTimeout, &Connection::put_ConnectionTimeout>(L"ConnectionTimeout"),
      property<&Connection::get_CursorLocation, &Connection::put_CursorLocation>(L"CursorLocation"),
      property<&Connection::get_Errors>(L"Errors"),
  };
  return table;
}

HRESULT Connection::need_open(std::wstring_view source) const {
  return odbc_ ? S_OK : raise(kObjectClosed, source, L"The connection is not open.");
}

HRESULT Connection::note(std::wstring_view source, const odbc::Failure& failure) {
  errors_ = failure.diagnostics();
  return raise(code_of(errors_.front()), source, failure.text());
}

void Connection::close() noexcept {
  if (odbc_) odbc::ConnectionPool::of_this_thread().give_back(std::move(odbc_));
  odbc_.reset();
}

std::unique_ptr<odbc::ResultSet> Connection::run(const std::wstring& sql, std::vector<odbc::Parameter>& parameters,
                                                 LONG timeout, bool is_kept) {
  errors_.clear();
  try {
    auto statement = std::make_unique<odbc::Statement>(odbc_, timeout);
    statement->run(sql, parameters);
    return std::make_unique<odbc::ResultSet>(std::move(statement), is_kept);
  } catch (const odbc::Failure& failure) {
    tell_refused(sql, parameters, failure.text());
    throw;
  }
}

HRESULT Connection::Open(BSTR connection_string, BSTR user, BSTR password, LONG) {
  if (odbc_) return raise(kObjectOpen, kSource, L"The connection is open already.");
  return noting_failures(kSource, [&] {
    errors_.clear();
    if (SysStringLen(connection_string) > 0) connection_string_ = view_of(connection_string);
    if (connection_string_.empty()) return raise(kInvalidArgument, kSource, L"Open: a connection string is needed.");
    const std::wstring full = odbc::complete_connection_string(connection_string_, view_of(user), view_of(password));
    odbc_ = odbc::ConnectionPool::of_this_thread().take(full, connection_timeout_);
    return S_OK;
  });
}

HRESULT Connection::Close() {
  RETURN_IF_FAILED(need_open(kSource));
  close();
  return S_OK;
}

HRESULT Connection::Execute(BSTR text, VARIANT* affected, LONG, IDispatch** recordset) {
  RETURN_IF_FAILED(need_open(kSource));
  if (SysStringLen(text) == 0) return raise(kNotAllowedHere, kSource, L"Execute: the command text is empty.");
  return noting_failures(kSource, [&] {
    std::vector<odbc::Parameter> none;
    std::unique_ptr<odbc::ResultSet> result = run(std::wstring(view_of(text)), none, command_timeout_, keeps_rows());
    put_affected(*result, affected);
    *recordset = make<Recordset>(CComPtr<Connection>(this), std::move(result)).detach();
    return S_OK;
  });
}

HRESULT Connection::BeginTrans(LONG* level) {
  RETURN_IF_FAILED(need_open(kSource));
  if (odbc_->is_in_transaction()) {
    return raise(kNotInThisContext, kSource, L"BeginTrans: a transaction is open already.");
  }
  return noting_failures(kSource, [&] {
    odbc_->begin();
    odbc::ConnectionPool::of_this_thread().remember_transaction(odbc_);
    *level = 1;
    return S_OK;
  });
}

HRESULT Connection::end_transaction(const wchar_t* member, void (odbc::Connection::*end)()) {
  RETURN_IF_FAILED(need_open(kSource));
  if (!odbc_->is_in_transaction()) {
    return raise(kNotInThisContext, kSource, member + std::wstring(L": no transaction is open."));
  }
  return noting_failures(kSource, [&] {
    (*odbc_.*end)();
    return S_OK;
  });
}

HRESULT Connection::put_ConnectionString(BSTR text) {
  if (odbc_) return raise(kObjectOpen, kSource, L"ConnectionString can be set only while the connection is closed.");
  return keep(text, connection_string_);
}

HRESULT Connection::put_CommandTimeout(LONG seconds) { return set_timeout(kSource, seconds, command_timeout_); }

HRESULT Connection::put_ConnectionTimeout(LONG seconds) { return set_timeout(kSource, seconds, connection_timeout_); }

HRESULT Connection::put_CursorLocation(LONG location) {
  return set_cursor_location(kSource, location, cursor_location_);
}

HRESULT Connection::get_Errors(IDispatch** errors) {
  *errors = make<ErrorList>(CComPtr<Connection>(this)).detach();
  return S_OK;
}

HRESULT set_timeout(std::wstring_view source, LONG seconds, LONG& timeout) {
  return choose(seconds, 0, 24 * 3600, source,
                L"A time-out is a number of seconds, a day at most; 0 waits without end.", timeout);
}

HRESULT set_cursor_location(std::wstring_view source, LONG number, CursorLocation& location) {
  return choose(number, CursorLocation::server, CursorLocation::client, source,
                L"CursorLocation is 2 (server) or 3 (client).", location);
}

HRESULT connection_of(const VARIANT& value, std::wstring_view source, CComPtr<Connection>& connection) {
  connection.reset();
  if (is_nothing(value)) return S_OK;
  if (value.vt == VT_BSTR) {
    connection = make<Connection>();
    return connection->Open(value.bstrVal, nullptr, nullptr, -1);
  }
  if (value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN) {
    if (!value.punkVal) return S_OK;
    CComQIPtr<IObjectAccess<Connection>> access(value.punkVal);
    if (access) {
      connection = access->object();
      return S_OK;
    }
  }
  return raise(kInvalidArgument, source, L"A connection object or a connection string is needed.");
}

}  // namespace korlib
