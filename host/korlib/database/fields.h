// ADODB.Fields and ADODB.Field: the columns of a recordset.
#pragma once

#include "database/collection.h"
#include "database/recordset.h"

namespace korlib {

// One column; its value is that of the recordset's current row, whenever it is asked. The recordset may have been
// closed, or opened anew with fewer columns, since the field was taken.
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
  HRESULT get_Precision(LONG* digits) { return get_DefinedSize(digits); }
  HRESULT get_NumericScale(LONG* digits);

 private:
  template <class Use>
  HRESULT with_column(Use use) const;

  const CComPtr<Recordset> recordset_;
  const std::size_t column_;
};

class Fields final : public Collection<Fields> {
 public:
  static constexpr const wchar_t* kClassName = L"Fields";
  explicit Fields(CComPtr<Recordset> recordset) : recordset_(std::move(recordset)) {}
  static std::span<const Member> members();

  HRESULT get__NewEnum(IUnknown** fields);

  // A closed recordset has none.
  std::size_t size() const { return recordset_->is_open() ? recordset_->columns().size() : 0; }
  CComPtr<Field> element(std::size_t at) const { return make<Field>(recordset_, at); }
  HRESULT find(const VARIANT& index, std::size_t& at) const { return recordset_->find_column(index, at); }

 private:
  const CComPtr<Recordset> recordset_;
};

}  // namespace korlib
