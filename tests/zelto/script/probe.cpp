#include "zelto/script/probe.h"

#include <korlib/errorinfo.h>

#include "script/realm.h"

namespace test {

std::atomic<int> Probe::alive = 0;

std::span<const korlib::Member> Probe::members() {
  using namespace korlib;
  static constexpr Member table[] = {
      property<&Probe::get_Item, &Probe::put_Item, &Probe::putref_Item>(L"Item").is_default(),
      property<&Probe::get_Name, &Probe::put_Name>(L"Name"),
      property<&Probe::get_Inner>(L"Inner"),
      method<&Probe::Keep>(L"Keep"),
      method<&Probe::Give>(L"Give"),
      method<&Probe::TypeOf>(L"TypeOf").optional(0),
      method<&Probe::Close>(L"Close"),
      method<&Probe::Act>(L"Act"),
      method<&Probe::ReadText>(L"ReadText").optional(-1),
      method<&Probe::Fail>(L"Fail").optional(0),
      method<&Probe::Call>(L"Call").optional(0),
      method<&Probe::CallMember>(L"CallMember"),
      method<&Probe::Hold>(L"Hold"),
      new_enum<&Probe::get__NewEnum>(),
  };
  return table;
}

HRESULT Probe::Keep(VARIANT value) { return VariantCopy(&kept, &value); }
HRESULT Probe::Give(VARIANT* value) { return VariantCopy(value, &kept); }
HRESULT Probe::TypeOf(VARIANT value, LONG* type) {
  *type = value.vt;
  return S_OK;
}
HRESULT Probe::Close() {
  ++closed;
  return S_OK;
}
HRESULT Probe::Act() { return action ? action() : S_OK; }
HRESULT Probe::ReadText(LONG count, BSTR* text) {
  *text = korlib::new_bstr(count < 0 ? L"everything" : std::wstring(static_cast<std::size_t>(count), L'x'));
  return S_OK;
}
HRESULT Probe::Fail(LONG code, BSTR description) {
  if (!description) return code;
  return korlib::raise(code, L"Probe", korlib::view_of(description));
}
HRESULT Probe::Call(IDispatch* function, VARIANT argument, VARIANT* result) {
  DISPPARAMS params{&argument, nullptr, 1, 0};
  return function->Invoke(DISPID_VALUE, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &params, result, nullptr,
                          nullptr);
}
HRESULT Probe::CallMember(IDispatch* object, BSTR member, VARIANT* result) {
  DISPID id = 0;
  RETURN_IF_FAILED(object->GetIDsOfNames(IID_NULL, &member, 1, LOCALE_SYSTEM_DEFAULT, &id));
  DISPPARAMS none{};
  return object->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET, &none, result,
                        nullptr, nullptr);
}
HRESULT Probe::Hold(IDispatch* object) {
  held = object;
  return S_OK;
}
HRESULT Probe::get_Item(VARIANT key, VARIANT* value) {
  CComVariant text;
  RETURN_IF_FAILED(VariantChangeType(&text, &key, 0, VT_BSTR));
  const auto found = items.find(std::wstring(korlib::view_of(text.bstrVal)));
  return found == items.end() ? S_OK : VariantCopy(value, &found->second);
}
HRESULT Probe::put_Item(VARIANT key, VARIANT value) {
  CComVariant text;
  RETURN_IF_FAILED(VariantChangeType(&text, &key, 0, VT_BSTR));
  how = L"put";
  put_type = value.vt;
  items[std::wstring(korlib::view_of(text.bstrVal))] = CComVariant(value);
  return S_OK;
}
HRESULT Probe::putref_Item(VARIANT key, VARIANT value) {
  RETURN_IF_FAILED(put_Item(key, value));
  how = L"putref";
  return S_OK;
}
HRESULT Probe::get_Name(BSTR* value) {
  *value = name.copy();
  return S_OK;
}
HRESULT Probe::put_Name(BSTR value) {
  name = CComBSTR(korlib::view_of(value));
  return S_OK;
}
HRESULT Probe::get_Inner(IDispatch** value) { return inner.copy_to(value); }
HRESULT Probe::get__NewEnum(IUnknown** values) {
  std::vector<CComVariant> keys;
  for (const auto& item : items) keys.emplace_back(std::wstring_view(item.first));
  return korlib::make_enumerator(std::move(keys), values);
}

std::span<const korlib::Member> Field::members() {
  using namespace korlib;
  static constexpr Member table[] = {property<&Field::get_Value, &Field::put_Value>(L"Value").is_default()};
  return table;
}

std::span<const korlib::Member> Row::members() {
  using namespace korlib;
  static constexpr Member table[] = {property<&Row::get_Item>(L"Item").is_default(),
                                     property<&Row::get_Fields>(L"Fields")};
  return table;
}

std::span<const korlib::Member> Page::members() {
  using namespace korlib;
  static constexpr Member table[] = {method<&Page::Write>(L"Write"), method<&Page::End>(L"End")};
  return table;
}

HRESULT Page::Write(VARIANT value) {
  CComVariant copy;
  if (value.vt == VT_NULL) return S_OK;
  RETURN_IF_FAILED(VariantChangeType(&copy, &value, 0, VT_BSTR));
  text += korlib::view_of(copy.bstrVal);
  return S_OK;
}

HRESULT Page::End() { return zelto::script::stop_page(); }

}  // namespace test
