// ADODB.Command.
#pragma once

#include <korlib/dbcommand.h>

#include "database/connection.h"
#include "database/parameters.h"

namespace korlib {

class Command;

struct ICommandAccess : IUnknown {
  virtual Command* command() = 0;

 protected:
  ~ICommandAccess() = default;
};

}  // namespace korlib
KORLIB_IID(korlib::ICommandAccess, "D5C6E0B7-94C4-4A6A-A7B3-2D3B0E6C7F18");

namespace korlib {

// A command text with its parameters. Serves one thread at a time.
class Command final : public DispatchObject<Command, IKorDBCommand, ICommandAccess> {
 public:
  static constexpr const wchar_t* kClassName = L"Command";
  static std::span<const Member> members();
  Command* command() override { return this; }

  HRESULT put_ActiveConnection(VARIANT connection) override;
  HRESULT put_CommandType(LONG type) override;
  HRESULT put_CommandText(BSTR text) override;
  HRESULT get_ActiveConnection(IDispatch** connection);
  HRESULT get_CommandType(LONG* type);
  HRESULT get_CommandText(BSTR* text);
  HRESULT get_CommandTimeout(LONG* seconds);
  HRESULT put_CommandTimeout(LONG seconds);
  HRESULT get_Prepared(VARIANT_BOOL* is_prepared);
  HRESULT put_Prepared(VARIANT_BOOL is_prepared);
  HRESULT get_Name(BSTR* name);
  HRESULT put_Name(BSTR name);
  HRESULT get_State(LONG* state);
  HRESULT get_Parameters(IDispatch** parameters);
  HRESULT CreateParameter(BSTR name, LONG type, LONG direction, LONG size, VARIANT value, IDispatch** parameter);
  // `values`, when given, stand in for the parameters' own, by position.
  HRESULT Execute(VARIANT* affected, VARIANT values, LONG options, IDispatch** recordset);
  HRESULT Cancel();

  // For the recordset.
  HRESULT use(CComPtr<Connection> connection);
  const CComPtr<Connection>& connection() const { return connection_; }
  HRESULT run(bool is_kept, std::unique_ptr<odbc::ResultSet>& result);

 private:
  HRESULT run(const VARIANT& values, bool is_kept, std::unique_ptr<odbc::ResultSet>& result);
  HRESULT collect(const VARIANT& values, std::vector<odbc::Parameter>& parameters) const;
  HRESULT take_results(const std::vector<odbc::Parameter>& parameters);
  HRESULT statement_text(std::size_t parameter_count, std::wstring& text) const;

  CComPtr<Connection> connection_;
  CComPtr<ParameterList> parameters_ = make<ParameterList>();
  std::wstring text_;
  std::wstring name_;
  LONG type_ = 8;      // unknown: taken as text
  LONG timeout_ = -1;  // the connection's
  bool is_prepared_ = false;
};

}  // namespace korlib
