// ADODB.Errors and ADODB.Error: what the database last said on a connection.
#pragma once

#include "database/collection.h"
#include "database/connection.h"

namespace korlib {

// The code by which scripts know this kind of failure.
HRESULT code_of(const odbc::Diagnostic& diagnostic);

class ErrorItem final : public DispatchObject<ErrorItem> {
 public:
  static constexpr const wchar_t* kClassName = L"Error";
  explicit ErrorItem(odbc::Diagnostic diagnostic) : diagnostic_(std::move(diagnostic)) {}
  static std::span<const Member> members();

  HRESULT get_Description(BSTR* text) { return give(diagnostic_.text, text); }
  HRESULT get_Number(LONG* number) { return give(LONG{code_of(diagnostic_)}, number); }
  HRESULT get_NativeError(LONG* number) { return give(diagnostic_.native, number); }
  HRESULT get_SQLState(BSTR* state) { return give(diagnostic_.state, state); }
  HRESULT get_Source(BSTR* source) { return give(Connection::kSource, source); }

 private:
  const odbc::Diagnostic diagnostic_;
};

class ErrorList final : public Collection<ErrorList> {
 public:
  static constexpr const wchar_t* kClassName = L"Errors";
  explicit ErrorList(CComPtr<Connection> connection) : connection_(std::move(connection)) {}
  static std::span<const Member> members();

  HRESULT get_Item(LONG index, IDispatch** error);
  HRESULT Clear();

  std::size_t size() const { return connection_->errors().size(); }
  CComPtr<ErrorItem> element(std::size_t at) const { return make<ErrorItem>(connection_->errors()[at]); }

 private:
  const CComPtr<Connection> connection_;
};

}  // namespace korlib
