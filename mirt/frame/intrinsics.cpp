#include "frame/intrinsics.h"

#include <korlib/comvariant.h>

#include "frame/error.h"

namespace {

template <class Interface>
HRESULT query_value(const VARIANT& value, CComPtr<Interface>& object) {
  IUnknown* held = nullptr;
  if (value.vt == VT_DISPATCH) held = value.pdispVal;
  if (value.vt == VT_UNKNOWN) held = value.punkVal;
  if (!held) return E_NOINTERFACE;
  return held->QueryInterface(korlib::iid_of<Interface>, object.put_void());
}

template <class Interface>
HRESULT take(IGetContextProperties* context, const wchar_t* name, CComPtr<Interface>& object) {
  CComVariant value;
  RETURN_IF_FAILED(context->GetProperty(CComBSTR(name), &value));
  return query_value(value, object);
}

}  // namespace

HRESULT mirt::server_variable(ZeltoTypeLibrary::IRequest* request, const wchar_t* name, CComVariant* text) {
  CComPtr<ZeltoTypeLibrary::IRequestDictionary> variables;
  RETURN_IF_FAILED(request->get_ServerVariables(variables.put()));
  if (!variables) return E_FAIL;
  const CComBSTR key(name);
  RETURN_IF_FAILED(variables->get_Item(korlib::borrowed(key.get()), text->put()));
  return text->change_type(VT_BSTR);
}

HRESULT mirt::Intrinsics::take_from(IGetContextProperties* context) {
  if (!context) return E_POINTER;
  RETURN_IF_FAILED(take(context, L"Server", server));
  RETURN_IF_FAILED(take(context, L"Application", application));
  RETURN_IF_FAILED(take(context, L"Request", request));
  RETURN_IF_FAILED(take(context, L"Response", response));
  CComVariant value;
  if (!succeeded_or_forgotten(context->GetProperty(CComBSTR(L"Session"), &value)) || value.vt != VT_DISPATCH)
    return S_OK;
  return query_value(value, session);
}
