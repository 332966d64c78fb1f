#include "page/binding.h"

#include <utility>

#include "frame/error.h"
#include "utility/members.h"

namespace page {
namespace {

// Replaces *value by its text, and the text by what SubmitDecode returns. A failure leaves it half way.
HRESULT decode(VARIANT* value) {
  RETURN_IF_FAILED(VariantChangeType(value, value, 0, VT_BSTR));
  CComBSTR decoded;
  RETURN_IF_FAILED(mirt::utility::submit_decode(value->bstrVal, decoded.put()));
  SysFreeString(std::exchange(value->bstrVal, decoded.detach()));
  return S_OK;
}

}  // namespace

HRESULT Binding::put_into(IKorLibDictionary* target, BSTR name, bool as_array) const {
  CComPtr<Collection> fields;
  RETURN_IF_FAILED(fields_.get_submitted(&fields));
  // Empty by its first character, as if the text were read up to its terminator.
  if (!name || !*name) return put_all_fields(fields.get(), target);
  return put_field(fields.get(), target, name, as_array);
}

HRESULT Binding::put_field(Collection* fields, IKorLibDictionary* target, BSTR name, bool as_array) const {
  CComVariant value;
  RETURN_IF_FAILED(fields->get_Item(korlib::borrowed(name), &value));
  if (as_array && value.vt == VT_DISPATCH) {
    RETURN_IF_FAILED(read_array(value.pdispVal, &value));
  } else if (decodes) {
    RETURN_IF_FAILED(decode(&value));
  }
  return store(target, name, &value);
}

// An element that cannot be decoded stays half way; only the last element's failure counts.
HRESULT Binding::read_array(IDispatch* field, CComVariant* value) const {
  CComSafeArray array;
  RETURN_IF_FAILED(values_of(field, array.put()));
  HRESULT hr = S_OK;
  const ULONG to_decode = decodes ? array.size() : 0;
  for (ULONG i = 0; i < to_decode; ++i) {
    if (FAILED(hr)) mirt::forget_error();  // of an element that is not the last
    hr = decode(&array.data<VARIANT>()[i]);
  }
  RETURN_IF_FAILED(hr);
  value->reset();
  array.detach_to(value);
  return S_OK;
}

HRESULT Binding::store(IKorLibDictionary* target, BSTR name, VARIANT* value) const {
  if (target) return target->put_Item(korlib::borrowed(name), *value);
  CEvent variable;
  RETURN_IF_FAILED(scripts_.GetEvent(name, variable));
  return variable.Put(value);
}

HRESULT Binding::put_all_fields(Collection* fields, IKorLibDictionary* target) const {
  int count = 0;
  RETURN_IF_FAILED(fields->get_Count(&count));
  for (LONG i = 0; i < count; ++i) {
    CComBSTR command;
    RETURN_IF_FAILED(memory_.get_command_field(&command));
    CComVariant key;
    RETURN_IF_FAILED(fields->get_Key(korlib::long_variant(i + 1), &key));
    RETURN_IF_FAILED(key.change_type(VT_BSTR));
    if (korlib::view_of(key.bstrVal) == command.view()) continue;
    // Not by put_into: a client can send a field without a name, and that would mean all fields.
    RETURN_IF_FAILED(put_field(fields, target, key.bstrVal, false));
  }
  return S_OK;
}

}  // namespace page
