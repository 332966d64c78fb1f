// Binding: request fields into the bag, the view or the script's variables.
#include "frame/error.h"
#include "page/mirt_impl.h"

namespace {

using Self = GIMirtImpl<IMirt>;
using ZeltoTypeLibrary::IRequestDictionary;

}  // namespace

STDMETHODIMP Self::PutIntoBag(BSTR name, VARIANT_BOOL as_array) try {
  const CComPtr<IDispatch> alive(owner_);
  CComPtr<IKorLibDictionary> bag;
  RETURN_IF_FAILED(memory_.get_bag(&bag));
  return PutInto(bag.get(), name, as_array);
} catch (...) {
  return mirt::hresult_from_exception();
}

STDMETHODIMP Self::PutIntoView(BSTR name, VARIANT_BOOL as_array) try {
  const CComPtr<IDispatch> alive(owner_);
  const CComPtr<IKorLibDictionary> view = dictionaries_.view;
  return view ? PutInto(view.get(), name, as_array) : E_FAIL;
} catch (...) {
  return mirt::hresult_from_exception();
}

STDMETHODIMP Self::PutIntoProp(BSTR name, VARIANT_BOOL as_array) try {
  const CComPtr<IDispatch> alive(owner_);
  return PutInto(nullptr, name, as_array);
} catch (...) {
  return mirt::hresult_from_exception();
}

HRESULT Self::PutInto(IKorLibDictionary* target, BSTR name, VARIANT_BOOL as_array) {
  CComPtr<IDispatch> request;
  RETURN_IF_FAILED(get_Request(request.put()));
  CComPtr<IRequestDictionary> fields;
  RETURN_IF_FAILED(request.query(fields.put()));
  // The first character decides, as it does for whoever counts up to the terminator.
  if (!name || !*name) return put_all_fields(fields.get(), target);
  return put_field(fields.get(), target, name, as_array != VARIANT_FALSE);
}

HRESULT Self::put_field(IRequestDictionary* fields, IKorLibDictionary* target, BSTR name, bool as_array) {
  CComVariant value;
  RETURN_IF_FAILED(fields->get_Item(korlib::borrowed(name), &value));
  if (as_array && value.vt == VT_DISPATCH) {
    RETURN_IF_FAILED(field_as_array(value.pdispVal, &value));
  } else if (submit_decode_on_put_into_) {
    RETURN_IF_FAILED(value.change_type(VT_BSTR));
    CComBSTR decoded;
    RETURN_IF_FAILED(SubmitDecode(value.bstrVal, decoded.put()));
    value.reset();
    value.vt = VT_BSTR;
    value.bstrVal = decoded.detach();
  }
  return store_field(target, name, &value);
}

// The values of one field as an array, decoded where the page wants that. An element that has no text or
// cannot be decoded stays as far as it got; only the last element's failure counts.
HRESULT Self::field_as_array(IDispatch* field, CComVariant* value) {
  CComSafeArray array;
  RETURN_IF_FAILED(ToArray(field, array.put()));
  HRESULT hr = S_OK;
  if (submit_decode_on_put_into_) {
    for (ULONG i = 0; i < array.size(); ++i) {
      if (FAILED(hr)) mirt::forget_error();  // of an element that is not the last
      VARIANT& element = array.data<VARIANT>()[i];
      hr = VariantChangeType(&element, &element, 0, VT_BSTR);
      CComBSTR decoded;
      if (SUCCEEDED(hr)) hr = SubmitDecode(element.bstrVal, decoded.put());
      if (FAILED(hr)) continue;
      SysFreeString(element.bstrVal);
      element.bstrVal = decoded.detach();
    }
  }
  RETURN_IF_FAILED(hr);
  value->reset();
  array.detach_to(value);
  return S_OK;
}

HRESULT Self::store_field(IKorLibDictionary* target, BSTR name, VARIANT* value) {
  if (target) return target->put_Item(korlib::borrowed(name), *value);
  CEvent variable;
  RETURN_IF_FAILED(handler_.GetEvent(name, variable));
  return variable.Put(value);
}

HRESULT Self::put_all_fields(IRequestDictionary* fields, IKorLibDictionary* target) {
  int count = 0;
  RETURN_IF_FAILED(fields->get_Count(&count));
  for (LONG i = 0; i < count; ++i) {
    CComBSTR command;
    RETURN_IF_FAILED(memory_.get_command_field(&command));
    CComVariant key;
    RETURN_IF_FAILED(fields->get_Key(korlib::long_variant(i + 1), &key));
    RETURN_IF_FAILED(key.change_type(VT_BSTR));
    if (korlib::view_of(key.bstrVal) == command.view()) continue;
    // By name, never by PutInto: a client can send a field without a name, and that would mean all fields.
    RETURN_IF_FAILED(put_field(fields, target, key.bstrVal, false));
  }
  return S_OK;
}
