#include "database/fields.h"

#include <algorithm>
#include <limits>

#include "database/convert.h"

namespace korlib {
namespace {

LONG clamped(std::size_t size) {
  return static_cast<LONG>(std::min<std::size_t>(size, std::numeric_limits<LONG>::max()));
}

}  // namespace

std::span<const Member> Field::members() {
  static constexpr Member table[] = {
      property<&Field::get_Value, &Field::put_Value>(L"Value").is_default(),
      property<&Field::get_Name>(L"Name"),
      property<&Field::get_Type>(L"Type"),
      property<&Field::get_DefinedSize>(L"DefinedSize"),
      property<&Field::get_ActualSize>(L"ActualSize"),
      property<&Field::get_Precision>(L"Precision"),
      property<&Field::get_NumericScale>(L"NumericScale"),
  };
  return table;
}

template <class Use>
HRESULT Field::with_column(Use use) const {
  RETURN_IF_FAILED(recordset_->need_open());
  const auto& columns = recordset_->columns();
  if (column_ < columns.size()) return use(columns[column_]);
  return raise(kItemNotFound, L"ADODB.Field", L"The recordset no longer has this field.");
}

HRESULT Field::get_Value(VARIANT* value) {
  return with_column([&](const odbc::Column&) { return recordset_->value_of(column_, value); });
}

HRESULT Field::put_Value(VARIANT) {
  return raise(kNotSupported, L"ADODB.Field", L"Records are read-only; change them with a command.");
}

HRESULT Field::get_Name(BSTR* name) {
  return with_column([&](const odbc::Column& column) { return give(column.name, name); });
}

HRESULT Field::get_Type(LONG* type) {
  return with_column([&](const odbc::Column& column) { return give(type_of(column.kind), type); });
}

HRESULT Field::get_DefinedSize(LONG* size) {
  return with_column([&](const odbc::Column& column) { return give(clamped(column.size), size); });
}

HRESULT Field::get_NumericScale(LONG* digits) {
  return with_column([&](const odbc::Column& column) { return give(column.scale, digits); });
}

HRESULT Field::get_ActualSize(LONG* size) {
  CComVariant value;
  RETURN_IF_FAILED(get_Value(value.put()));
  if (value.vt == VT_BSTR) {
    *size = clamped(SysStringLen(value.bstrVal));
  } else if (value.vt == (VT_ARRAY | VT_UI1)) {
    *size = clamped(value.parray->rgsabound[0].cElements);
  } else {
    *size = value.vt == VT_NULL ? 0 : 8;
  }
  return S_OK;
}

std::span<const Member> Fields::members() {
  static constexpr Member table[] = {
      property<&Fields::get_Item>(L"Item").is_default(),
      property<&Fields::get_Count>(L"Count"),
      new_enum<&Fields::get__NewEnum>(),
  };
  return table;
}

HRESULT Fields::get__NewEnum(IUnknown** fields) {
  RETURN_IF_FAILED(recordset_->need_open());
  return Collection::get__NewEnum(fields);
}

}  // namespace korlib
