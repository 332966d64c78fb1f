// ADODB.Connection.
#pragma once

#include <memory>
#include <string>

#include "database/properties.h"
#include "odbc/result_set.h"

namespace korlib {

class Connection;
KORLIB_IID(IObjectAccess<Connection>, "1B1C2A5B-6C11-4E8C-9C6B-0F5A3D5B1E8A");

// Serves one thread at a time. Recordsets and commands hold their connection; when the last holder goes,
// an open transaction is rolled back and the database connection returns to the pool.
class Connection final : public DispatchObject<Connection, IDispatch, IObjectAccess<Connection>> {
 public:
  static constexpr const wchar_t* kClassName = L"Connection";
  static constexpr std::wstring_view kSource = L"ADODB.Connection";
  ~Connection() override { close(); }
  static std::span<const Member> members();
  Connection* object() override { return this; }

  HRESULT Open(BSTR connection_string, BSTR user, BSTR password, LONG options);
  HRESULT Close();
  HRESULT Execute(BSTR text, VARIANT* affected, LONG options, IDispatch** recordset);
  HRESULT BeginTrans(LONG* level);
  HRESULT CommitTrans() { return end_transaction(L"CommitTrans", &odbc::Connection::commit); }
  HRESULT RollbackTrans() { return end_transaction(L"RollbackTrans", &odbc::Connection::roll_back); }
  HRESULT get_State(LONG* state) { return give(odbc_ ? ObjectState::open : ObjectState::closed, state); }
  HRESULT get_ConnectionString(BSTR* text) { return give(connection_string_, text); }
  HRESULT put_ConnectionString(BSTR text);
  HRESULT get_CommandTimeout(LONG* seconds) { return give(command_timeout_, seconds); }
  HRESULT put_CommandTimeout(LONG seconds);
  HRESULT get_ConnectionTimeout(LONG* seconds) { return give(connection_timeout_, seconds); }
  HRESULT put_ConnectionTimeout(LONG seconds);
  HRESULT get_CursorLocation(LONG* location) { return give(cursor_location_, location); }
  HRESULT put_CursorLocation(LONG location);
  HRESULT get_Errors(IDispatch** errors);

  // For the other classes of this folder.
  HRESULT need_open(std::wstring_view source) const;
  bool keeps_rows() const { return cursor_location_ == CursorLocation::client; }
  LONG command_timeout() const { return command_timeout_; }
  std::vector<odbc::Diagnostic>& errors() { return errors_; }
  // Throws odbc::Failure.
  std::unique_ptr<odbc::ResultSet> run(const std::wstring& sql, std::vector<odbc::Parameter>& parameters, LONG timeout,
                                       bool is_kept);
  // Runs `body`; what the database says against it becomes the connection's errors and the thread's.
  template <class Body>
  HRESULT noting_failures(std::wstring_view source, Body body) noexcept {
    return guarded(source, [&] {
      try {
        return body();
      } catch (const odbc::Failure& failure) {
        return note(source, failure);
      }
    });
  }

 private:
  void close() noexcept;
  HRESULT end_transaction(const wchar_t* member, void (odbc::Connection::*end)());
  HRESULT note(std::wstring_view source, const odbc::Failure& failure);

  std::shared_ptr<odbc::Connection> odbc_;
  std::wstring connection_string_;
  std::vector<odbc::Diagnostic> errors_;
  LONG command_timeout_ = 30;
  LONG connection_timeout_ = 15;
  CursorLocation cursor_location_ = CursorLocation::server;
};

// The new value of a property; raises kInvalidArgument for what it cannot be. A time-out is a day at most.
HRESULT set_timeout(std::wstring_view source, LONG seconds, LONG& timeout);
HRESULT set_cursor_location(std::wstring_view source, LONG number, CursorLocation& location);

// The connection that a VARIANT names: a connection object, or a connection string that is opened.
// Null when the VARIANT is empty, null or left out.
HRESULT connection_of(const VARIANT& value, std::wstring_view source, CComPtr<Connection>& connection);

}  // namespace korlib
