// ADODB.Errors and ADODB.Error: what the database last said on a connection.
#pragma once

#include "database/connection.h"

namespace korlib {

// The code by which scripts know this kind of failure.
HRESULT code_of(const odbc::Diagnostic& diagnostic);

class ErrorItem final : public DispatchObject<ErrorItem> {
 public:
  static constexpr const wchar_t* kClassName = L"Error";
  explicit ErrorItem(odbc::Diagnostic diagnostic) : diagnostic_(std::move(diagnostic)) {}
  static std::span<const Member> members();

  HRESULT get_Description(BSTR* text);
  HRESULT get_Number(LONG* number);
  HRESULT get_NativeError(LONG* number);
  HRESULT get_SQLState(BSTR* state);
  HRESULT get_Source(BSTR* source);

 private:
  const odbc::Diagnostic diagnostic_;
};

class ErrorList final : public DispatchObject<ErrorList> {
 public:
  static constexpr const wchar_t* kClassName = L"Errors";
  explicit ErrorList(CComPtr<Connection> connection) : connection_(std::move(connection)) {}
  static std::span<const Member> members();

  HRESULT get_Item(LONG index, IDispatch** error);
  HRESULT get_Count(LONG* count);
  HRESULT get__NewEnum(IUnknown** errors);
  HRESULT Clear();

 private:
  const CComPtr<Connection> connection_;
};

}  // namespace korlib
