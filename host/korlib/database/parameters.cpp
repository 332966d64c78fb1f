#include "database/parameters.h"

#include "database/convert.h"

namespace korlib {
namespace {

constexpr std::wstring_view kSource = L"ADODB.Parameter";
constexpr std::wstring_view kListSource = L"ADODB.Parameters";

bool is_too_long(const odbc::Value& value, std::size_t size) {
  if (const auto* text = std::get_if<std::wstring>(&value)) return text->size() > size;
  if (const auto* bytes = std::get_if<odbc::Bytes>(&value)) return bytes->data.size() > size;
  return false;
}

HRESULT set_digits(LONG digits, LONG& slot) {
  return choose(digits, 0, 255, kSource, L"Precision and NumericScale are 0 to 255.", slot);
}

}  // namespace

std::span<const Member> ParameterItem::members() {
  static constexpr Member table[] = {
      property<&ParameterItem::get_Value, &ParameterItem::put_Value>(L"Value").is_default(),
      property<&ParameterItem::get_Name, &ParameterItem::put_Name>(L"Name"),
      property<&ParameterItem::get_Type, &ParameterItem::put_Type>(L"Type"),
      property<&ParameterItem::get_Direction, &ParameterItem::put_Direction>(L"Direction"),
      property<&ParameterItem::get_Size, &ParameterItem::put_Size>(L"Size"),
      property<&ParameterItem::get_Precision, &ParameterItem::put_Precision>(L"Precision"),
      property<&ParameterItem::get_NumericScale, &ParameterItem::put_NumericScale>(L"NumericScale"),
      method<&ParameterItem::AppendChunk>(L"AppendChunk"),
  };
  return table;
}

HRESULT ParameterItem::put_Type(LONG type) {
  const auto wanted = static_cast<DataType>(type);
  if (wanted != DataType::empty && wanted != DataType::variant && !kind_of(wanted)) {
    return raise(kInvalidArgument, kSource, L"Type: " + std::to_wstring(type) + L" is not a data type of a parameter.");
  }
  type_ = wanted;
  return S_OK;
}

HRESULT ParameterItem::put_Direction(LONG direction) {
  return choose(direction, odbc::Direction::in, odbc::Direction::return_value, kSource,
                L"Direction is 1 (in), 2 (out), 3 (both) or 4 (return value).", direction_);
}

HRESULT ParameterItem::put_Size(LONG size) {
  size_ = size;
  return S_OK;
}

HRESULT ParameterItem::put_Precision(LONG digits) { return set_digits(digits, precision_); }

HRESULT ParameterItem::put_NumericScale(LONG digits) { return set_digits(digits, scale_); }

HRESULT ParameterItem::put_Value(VARIANT value) {
  CComVariant fresh;
  RETURN_IF_FAILED(VariantCopyInd(&fresh, &value));
  value_ = std::move(fresh);
  return S_OK;
}

HRESULT ParameterItem::AppendChunk(VARIANT piece) {
  if (value_.vt != piece.vt || (piece.vt != VT_BSTR && piece.vt != (VT_ARRAY | VT_UI1))) return put_Value(piece);
  odbc::Value present;
  odbc::Value more;
  const odbc::Kind kind = piece.vt == VT_BSTR ? odbc::Kind::text : odbc::Kind::binary;
  RETURN_IF_FAILED(from_variant(value_, kind, present));
  RETURN_IF_FAILED(from_variant(piece, kind, more));
  if (auto* text = std::get_if<std::wstring>(&present)) text->append(std::get<std::wstring>(more));
  if (auto* bytes = std::get_if<odbc::Bytes>(&present)) bytes->data.append(std::get<odbc::Bytes>(more).data);
  return to_variant(present, value_.put());
}

HRESULT ParameterItem::to_statement(std::size_t number, const VARIANT& value, odbc::Parameter& parameter) const {
  const std::optional<odbc::Kind> declared = kind_of(type_);
  parameter.kind = declared ? *declared : kind_of_value(value);
  parameter.direction = direction_;
  parameter.size = size_ > 0 ? static_cast<std::size_t>(size_) : 0;
  const auto refuse = [&](std::wstring_view why) {
    std::wstring which = L"Parameter " + std::to_wstring(number) + (name_.empty() ? L"" : L" (" + name_ + L")");
    return raise(kInvalidConversion, kSource, which.append(why));
  };
  if (direction_ == odbc::Direction::out || direction_ == odbc::Direction::return_value) return S_OK;
  if (FAILED(from_variant(value, parameter.kind, parameter.value))) {
    return refuse(L": the value does not fit the parameter's type.");
  }
  const auto* text = std::get_if<std::wstring>(&parameter.value);
  if (text && text->find(L'\0') != std::wstring::npos) {  // drivers would cut it there silently
    return refuse(L": the text holds a NUL character.");
  }
  if (parameter.size > 0 && is_too_long(parameter.value, parameter.size)) {
    return refuse(L": the value is longer than the parameter's Size.");
  }
  return S_OK;
}

std::span<const Member> ParameterList::members() {
  static constexpr Member table[] = {
      property<&ParameterList::get_Item>(L"Item").is_default(),
      property<&ParameterList::get_Count>(L"Count"),
      new_enum<&ParameterList::get__NewEnum>(),
      method<&ParameterList::Append>(L"Append"),
      method<&ParameterList::Delete>(L"Delete"),
  };
  return table;
}

HRESULT ParameterList::find(const VARIANT& index, std::size_t& at) const {
  const auto name_of = [this](std::size_t place) { return std::wstring_view(items_[place]->name()); };
  return find_element(index, size(), name_of, kListSource, L"The command has no parameter", at);
}

HRESULT ParameterList::Append(IObjectAccess<ParameterItem>* parameter) {
  if (!parameter) return raise(kInvalidArgument, kListSource, L"Append: a parameter object is needed.");
  items_.emplace_back(parameter->object());
  return S_OK;
}

HRESULT ParameterList::Delete(VARIANT index) {
  std::size_t at = 0;
  RETURN_IF_FAILED(find(index, at));
  items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(at));
  return S_OK;
}

}  // namespace korlib
