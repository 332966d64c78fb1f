#include "database/errors.h"

namespace korlib {

HRESULT code_of(const odbc::Diagnostic& diagnostic) {
  constexpr struct {
    std::wstring_view state;  // the first characters of an SQLSTATE
    HRESULT code;
  } kCodes[] = {
      {L"HYT", kQueryTimedOut},         // time-out
      {L"23", hresult(0x80040E2F)},     // a constraint is violated
      {L"42S02", hresult(0x80040E37)},  // no such table
      {L"42P01", hresult(0x80040E37)},  // no such table, as PostgreSQL says it
      {L"42", hresult(0x80040E14)},     // the command has errors
      {L"28", hresult(0x80040E4D)},     // authentication
      {L"22", hresult(0x80040E07)},     // the data cannot be converted
      {L"HY010", kNotAllowedHere},      // not at this point
  };
  for (const auto& row : kCodes) {
    if (diagnostic.state.starts_with(row.state)) return row.code;
  }
  return E_FAIL;
}

std::span<const Member> ErrorItem::members() {
  static constexpr Member table[] = {
      property<&ErrorItem::get_Description>(L"Description").is_default(),
      property<&ErrorItem::get_Number>(L"Number"),
      property<&ErrorItem::get_NativeError>(L"NativeError"),
      property<&ErrorItem::get_SQLState>(L"SQLState"),
      property<&ErrorItem::get_Source>(L"Source"),
  };
  return table;
}

std::span<const Member> ErrorList::members() {
  static constexpr Member table[] = {
      property<&ErrorList::get_Item>(L"Item").is_default(),
      property<&ErrorList::get_Count>(L"Count"),
      new_enum<&ErrorList::get__NewEnum>(),
      method<&ErrorList::Clear>(L"Clear"),
  };
  return table;
}

HRESULT ErrorList::get_Item(LONG index, IDispatch** error) {
  const auto at = static_cast<std::size_t>(index);
  if (index < 0 || at >= size()) return raise(kItemNotFound, L"ADODB.Errors", L"There is no error of that number.");
  return give(element(at).get(), error);
}

HRESULT ErrorList::Clear() {
  connection_->errors().clear();
  return S_OK;
}

}  // namespace korlib
