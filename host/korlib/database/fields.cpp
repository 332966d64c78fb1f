#include "database/fields.h"

#include <algorithm>
#include <limits>

#include <korlib_host/enumerator.h>

#include "classes/script_errors.h"
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

// The recordset may have been closed, or opened anew with fewer columns, since the field was taken.
const odbc::Column* Field::find(HRESULT& hr) const {
  hr = recordset_->need_open();
  if (FAILED(hr)) return nullptr;
  if (column_ < recordset_->columns().size()) return &recordset_->columns()[column_];
  hr = raise(kItemNotFound, L"ADODB.Field", L"The field is gone.");
  return nullptr;
}

HRESULT Field::get_Value(VARIANT* value) {
  HRESULT hr = S_OK;
  const odbc::Column* column = find(hr);
  if (!column) return hr;
  return recordset_->value_of(column_, value);
}

HRESULT Field::put_Value(VARIANT) {
  return raise(kNotSupported, L"ADODB.Field", L"Records are read-only; change them with a command.");
}

HRESULT Field::get_Name(BSTR* name) {
  HRESULT hr = S_OK;
  const odbc::Column* column = find(hr);
  if (!column) return hr;
  *name = new_bstr(column->name);
  return S_OK;
}

HRESULT Field::get_Type(LONG* type) {
  HRESULT hr = S_OK;
  const odbc::Column* column = find(hr);
  if (!column) return hr;
  *type = type_of(column->kind);
  return S_OK;
}

HRESULT Field::get_DefinedSize(LONG* size) {
  HRESULT hr = S_OK;
  const odbc::Column* column = find(hr);
  if (!column) return hr;
  *size = clamped(column->size);
  return S_OK;
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

HRESULT Field::get_Precision(LONG* digits) { return get_DefinedSize(digits); }

HRESULT Field::get_NumericScale(LONG* digits) {
  HRESULT hr = S_OK;
  const odbc::Column* column = find(hr);
  if (!column) return hr;
  *digits = column->scale;
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

HRESULT Fields::get_Item(VARIANT index, IDispatch** field) {
  *field = nullptr;
  std::size_t column = 0;
  RETURN_IF_FAILED(recordset_->find_column(index, column));
  *field = make<Field>(recordset_, column).detach();
  return S_OK;
}

HRESULT Fields::get_Count(LONG* count) {
  *count = 0;  // a closed recordset has none
  if (SUCCEEDED(recordset_->need_open())) *count = static_cast<LONG>(recordset_->columns().size());
  return S_OK;
}

HRESULT Fields::get__NewEnum(IUnknown** fields) {
  RETURN_IF_FAILED(recordset_->need_open());
  std::vector<CComVariant> items;
  for (std::size_t i = 0; i < recordset_->columns().size(); ++i) {
    items.emplace_back(static_cast<IDispatch*>(make<Field>(recordset_, i).get()));
  }
  return make_enumerator(std::move(items), fields);
}

}  // namespace korlib
