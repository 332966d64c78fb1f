// ADODB.Parameters and ADODB.Parameter.
#pragma once

#include <string>
#include <vector>

#include "database/collection.h"
#include "odbc/value.h"

namespace korlib {

class ParameterItem;
KORLIB_IID(IObjectAccess<ParameterItem>, "A0B64D3E-6E57-4E0B-8F7B-6E2B7C9D1C55");

// One value for a "?" of the command text, in its place by position.
class ParameterItem final : public DispatchObject<ParameterItem, IDispatch, IObjectAccess<ParameterItem>> {
 public:
  static constexpr const wchar_t* kClassName = L"Parameter";
  static std::span<const Member> members();
  ParameterItem* object() override { return this; }

  HRESULT get_Name(BSTR* name) { return give(name_, name); }
  HRESULT put_Name(BSTR name) { return keep(name, name_); }
  HRESULT get_Type(LONG* type) { return give(type_, type); }
  HRESULT put_Type(LONG type);
  HRESULT get_Direction(LONG* direction) { return give(direction_, direction); }
  HRESULT put_Direction(LONG direction);
  HRESULT get_Size(LONG* size) { return give(size_, size); }
  HRESULT put_Size(LONG size);
  HRESULT get_Precision(LONG* digits) { return give(precision_, digits); }
  HRESULT put_Precision(LONG digits);
  HRESULT get_NumericScale(LONG* digits) { return give(scale_, digits); }
  HRESULT put_NumericScale(LONG digits);
  HRESULT get_Value(VARIANT* value) { return VariantCopy(value, &value_); }
  HRESULT put_Value(VARIANT value);
  HRESULT AppendChunk(VARIANT piece);

  const std::wstring& name() const { return name_; }
  odbc::Direction direction() const { return direction_; }
  const CComVariant& value() const { return value_; }
  // As the statement takes it, with that value; an error names the parameter by `number`, counted from 1.
  HRESULT to_statement(std::size_t number, const VARIANT& value, odbc::Parameter& parameter) const;

 private:
  std::wstring name_;
  CComVariant value_;
  DataType type_ = DataType::empty;
  odbc::Direction direction_ = odbc::Direction::in;
  LONG size_ = 0;
  LONG precision_ = 0;
  LONG scale_ = 0;
};

class ParameterList final : public Collection<ParameterList> {
 public:
  static constexpr const wchar_t* kClassName = L"Parameters";
  static std::span<const Member> members();

  HRESULT Append(IObjectAccess<ParameterItem>* parameter);
  HRESULT Delete(VARIANT index);

  const std::vector<CComPtr<ParameterItem>>& items() const { return items_; }
  std::size_t size() const { return items_.size(); }
  CComPtr<ParameterItem> element(std::size_t at) const { return items_[at]; }
  HRESULT find(const VARIANT& index, std::size_t& at) const;

 private:
  std::vector<CComPtr<ParameterItem>> items_;
};

}  // namespace korlib
