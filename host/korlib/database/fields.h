// ADODB.Fields and ADODB.Field: the columns of a recordset.
#pragma once

#include "database/recordset.h"

namespace korlib {

// One column; its value is that of the recordset's current row, whenever it is asked.
class Field final : public DispatchObject<Field> {
 public:
  static constexpr const wchar_t* kClassName = L"Field";
  Field(CComPtr<Recordset> recordset, std::size_t column) : recordset_(std::move(recordset)), column_(column) {}
  static std::span<const Member> members();

  HRESULT get_Value(VARIANT* value);
  HRESULT put_Value(VARIANT value);
  HRESULT get_Name(BSTR* name);
  HRESULT get_Type(LONG* type);
  HRESULT get_DefinedSize(LONG* size);
  HRESULT get_ActualSize(LONG* size);
  HRESULT get_Precision(LONG* digits);
  HRESULT get_NumericScale(LONG* digits);

 private:
  const odbc::Column* find(HRESULT& hr) const;  // null with the reason

  const CComPtr<Recordset> recordset_;
  const std::size_t column_;
};

class Fields final : public DispatchObject<Fields> {
 public:
  static constexpr const wchar_t* kClassName = L"Fields";
  explicit Fields(CComPtr<Recordset> recordset) : recordset_(std::move(recordset)) {}
  static std::span<const Member> members();

  HRESULT get_Item(VARIANT index, IDispatch** field);
  HRESULT get_Count(LONG* count);
  HRESULT get__NewEnum(IUnknown** fields);

 private:
  const CComPtr<Recordset> recordset_;
};

}  // namespace korlib
