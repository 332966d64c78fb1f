#include "script/arguments.h"

#include "script/script_classes.h"

namespace zelto::script {
namespace {

constexpr int kMostDefaults = 8;  // a default member that answers an object with a default member …

HRESULT put(RealmState& realm, IDispatch* object, DISPID id, std::vector<CComVariant>& reversed, const VARIANT& value) {
  std::vector<VARIANT> all;
  all.reserve(reversed.size() + 1);
  all.push_back(value);
  all.insert(all.end(), reversed.begin(), reversed.end());
  DISPID named = DISPID_PROPERTYPUT;
  DISPPARAMS params{all.data(), &named, static_cast<UINT>(all.size()), 1};
  const bool is_object = value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN;
  const WORD flags = is_object ? DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF : DISPATCH_PROPERTYPUT;
  return realm.invoke(object, id, flags, &params, nullptr);
}

HRESULT get_object(RealmState& realm, IDispatch* object, DISPID id, std::vector<CComVariant>& reversed, WORD flags,
                   CComPtr<IDispatch>* out) {
  DISPPARAMS params{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  CComVariant result;
  RETURN_IF_FAILED(realm.invoke(object, id, flags, &params, &result));
  if (result.vt == VT_DISPATCH) *out = result.pdispVal;
  return *out ? S_OK : DISP_E_MEMBERNOTFOUND;
}

}  // namespace

void note_kind(RealmState& realm, JSValueRef value, JSValueRef name) {
  if (!JSValueIsObjectOfClass(realm.context(), value, realm.engine().classes().object)) return;
  auto* held = held_by<AutomationObject>(const_cast<JSObjectRef>(value));
  if (held) held->set_kind(realm.text_of(name));
}

bool CallArguments::convert(RealmState& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  reversed_.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    CComVariant& slot = reversed_[count - 1 - i];
    if (JSValueIsUndefined(realm.context(), values[i])) {
      slot = korlib::omitted();
    } else if (!realm.to_variant(values[i], &slot, exception)) {
      return false;
    }
  }
  return true;
}

HRESULT put_member(RealmState& realm, IDispatch* object, DISPID id, std::vector<CComVariant>& reversed,
                   const VARIANT& value) {
  const HRESULT hr = put(realm, object, id, reversed, value);
  if (!is_refused(hr) || is_unwinding()) return hr;
  CComPtr<IDispatch> inner;
  std::vector<CComVariant> none;
  if (id != DISPID_VALUE && !reversed.empty() &&
      SUCCEEDED(get_object(realm, object, id, none, DISPATCH_PROPERTYGET, &inner))) {
    return put_member(realm, inner.get(), DISPID_VALUE, reversed, value);
  }
  if (!reversed.empty() && SUCCEEDED(get_object(realm, object, id, reversed, kCall, &inner))) {
    return put(realm, inner.get(), DISPID_VALUE, none, value);
  }
  return hr;
}

JSValueRef call_member(RealmState& realm, IDispatch* object, DISPID id, std::wstring_view name, std::size_t count,
                       const JSValueRef* values, JSValueRef* exception) {
  if (!realm.may_call(exception)) return nullptr;
  CallArguments arguments;
  if (!arguments.convert(realm, count, values, exception)) return nullptr;
  CComVariant result;
  const HRESULT hr = realm.invoke(object, id, kCall, arguments.params(), &result);
  if (FAILED(hr) || is_unwinding()) {
    realm.raise(hr, name, exception);
    return nullptr;
  }
  JSValueRef value = realm.to_script(result, exception);
  // Of what Server gives for one argument, only a created object is an object.
  if (value && object == realm.server() && count == 1) note_kind(realm, value, values[0]);
  return value;
}

JSValueRef call_bare(RealmState& realm, IDispatch* object, DISPID id, std::wstring_view name, JSValueRef otherwise,
                     JSValueRef* exception) {
  if (!realm.may_call(exception)) return nullptr;
  CComVariant result;
  DISPPARAMS none{};
  const HRESULT hr = realm.invoke(object, id, kCall, &none, &result);
  if (is_refused(hr) && otherwise && !is_unwinding()) return otherwise;
  if (SUCCEEDED(hr) && !is_unwinding()) return realm.to_script(result, exception);
  realm.raise(hr, name, exception);
  return nullptr;
}

JSValueRef default_value(RealmState& realm, IDispatch* object, JSValueRef* exception) {
  if (!realm.may_call(exception)) return nullptr;
  CComPtr<IDispatch> current(object);
  for (int i = 0; i < kMostDefaults; ++i) {
    CComVariant result;
    DISPPARAMS none{};
    const HRESULT hr = realm.invoke(current.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, &none, &result);
    if (is_refused(hr) && !is_unwinding()) return nullptr;
    if (FAILED(hr) || is_unwinding()) {
      realm.raise(hr, {}, exception);
      return nullptr;
    }
    if (result.vt != VT_DISPATCH || !result.pdispVal) return realm.to_script(result, exception);
    current = result.pdispVal;
  }
  return nullptr;
}

}  // namespace zelto::script
