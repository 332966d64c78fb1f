// ADODB.Command.
#pragma once

#include <korlib/dbcommand.h>

#include "database/connection.h"
#include "database/parameters.h"

namespace korlib {

class Command;
KORLIB_IID(IObjectAccess<Command>, "D5C6E0B7-94C4-4A6A-A7B3-2D3B0E6C7F18");

// A command text with its parameters. Serves one thread at a time.
class Command final : public DispatchObject<Command, IKorDBCommand, IObjectAccess<Command>> {
 public:
  static constexpr const wchar_t* kClassName = L"Command";
  static constexpr std::wstring_view kSource = L"ADODB.Command";
  static std::span<const Member> members();
  Command* object() override { return this; }

  HRESULT put_ActiveConnection(VARIANT connection) override;
  HRESULT put_CommandType(LONG type) override;
  HRESULT put_CommandText(BSTR text) override;
  HRESULT get_ActiveConnection(IDispatch** connection) { return give(connection_.get(), connection); }
  HRESULT get_CommandType(LONG* type) { return give(type_, type); }
  HRESULT get_CommandText(BSTR* text) { return give(text_, text); }
  HRESULT get_CommandTimeout(LONG* seconds);
  HRESULT put_CommandTimeout(LONG seconds);
  HRESULT get_Prepared(VARIANT_BOOL* is_prepared) { return give(is_prepared_, is_prepared); }
  HRESULT put_Prepared(VARIANT_BOOL is_prepared);
  HRESULT get_Name(BSTR* name) { return give(name_, name); }
  HRESULT put_Name(BSTR name) { return keep(name, name_); }
  HRESULT get_State(LONG* state) { return give(ObjectState::closed, state); }
  HRESULT get_Parameters(IDispatch** parameters) { return give(parameters_.get(), parameters); }
  HRESULT CreateParameter(BSTR name, LONG type, LONG direction, LONG size, VARIANT value, IDispatch** parameter);
  // `values`, when given, stand in for the parameters' own, by position.
  HRESULT Execute(VARIANT* affected, VARIANT values, LONG options, IDispatch** recordset);
  HRESULT Cancel() { return S_OK; }  // a command runs only during Execute

  // For the recordset.
  void use(CComPtr<Connection> connection) { connection_ = std::move(connection); }
  const CComPtr<Connection>& connection() const { return connection_; }
  // `values` as for Execute.
  HRESULT run(const VARIANT& values, bool is_kept, std::unique_ptr<odbc::ResultSet>& result);

 private:
  HRESULT collect(const VARIANT& values, std::vector<odbc::Parameter>& parameters) const;
  HRESULT take_results(const std::vector<odbc::Parameter>& parameters);
  HRESULT statement_text(std::size_t parameter_count, std::wstring& text) const;

  CComPtr<Connection> connection_;
  CComPtr<ParameterList> parameters_ = make<ParameterList>();
  std::wstring text_;
  std::wstring name_;
  CommandType type_ = CommandType::unknown;
  LONG timeout_ = -1;  // the connection's time-out
  bool is_prepared_ = false;
};

}  // namespace korlib
