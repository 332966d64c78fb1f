// The dictionaries that a script sees, and the submitted fields.
#include <korlib/comvariant.h>

#include "frame/error.h"
#include "page/mirt_impl.h"
#include "upload/intake.h"

namespace {

using Self = GIMirtImpl<IMirt>;
using ZeltoTypeLibrary::IRequestDictionary;

constexpr std::wstring_view kFormType = L"application/x-www-form-urlencoded";

HRESULT hand_out(const CComPtr<IRequestDictionary>& fields, IDispatch** out) {
  return fields ? fields.query(out) : E_FAIL;
}

}  // namespace

STDMETHODIMP Self::get_Bag(IDispatch** bag) {
  if (!bag) return E_POINTER;
  *bag = nullptr;
  CComPtr<IKorLibDictionary> held;
  RETURN_IF_FAILED(get_session_bag(&held));
  return held.query(bag);
}

STDMETHODIMP Self::get_View(IDispatch** view) {
  if (!view) return E_INVALIDARG;
  *view = nullptr;
  return view_ ? view_.query(view) : E_FAIL;
}

STDMETHODIMP Self::get_Include(IDispatch** include) {
  if (!include) return E_POINTER;
  *include = nullptr;
  return include_ ? include_.query(include) : S_OK;
}

STDMETHODIMP Self::get_Request(IDispatch** request) {
  if (!request) return E_POINTER;
  *request = nullptr;
  const CComPtr<ZeltoTypeLibrary::IRequest> asp = asp_.request;
  if (!asp) return E_FAIL;
  CComPtr<IRequestDictionary> fields;
  CComVariant method;
  RETURN_IF_FAILED(server_variable(L"HTTP_METHOD", &method));
  if (korlib::view_of(method.bstrVal) == L"POST") {
    if (multipart_form_) return multipart_form_.query(request);
    CComVariant type;
    RETURN_IF_FAILED(server_variable(L"HTTP_CONTENT_TYPE", &type));
    if (korlib::view_of(type.bstrVal).starts_with(kFormType)) {
      RETURN_IF_FAILED(asp->get_Form(fields.put()));
      return hand_out(fields, request);
    }
  }
  RETURN_IF_FAILED(asp->get_QueryString(fields.put()));
  return hand_out(fields, request);
}

HRESULT Self::server_variable(const wchar_t* name, CComVariant* text) {
  CComPtr<IRequestDictionary> variables;
  RETURN_IF_FAILED(asp_.request->get_ServerVariables(variables.put()));
  if (!variables) return E_FAIL;
  const CComBSTR key(name);
  RETURN_IF_FAILED(variables->get_Item(korlib::borrowed(key.get()), text->put()));
  return text->change_type(VT_BSTR);
}

// Null, with success, never: a session whose dictionary could not be made fails here.
HRESULT Self::get_session_bag(CComPtr<IKorLibDictionary>* bag) {
  // Until Process has bound a session there is none to ask, which a script hears in the same words.
  const CComPtr<IMirtSession> session = session_ ? session_ : CComPtr<IMirtSession>(&g_oMirtSessionNull);
  RETURN_IF_FAILED(session->get_Bag(bag->put()));
  return *bag ? S_OK : E_FAIL;
}

// The request field that carries the command.
HRESULT Self::command_field(CComBSTR* name) {
  if (backable_) {
    *name = command_name_;
    return S_OK;
  }
  const CComPtr<IMirtSession> session = session_ ? session_ : CComPtr<IMirtSession>(&g_oMirtSessionNull);
  return session->GetCommandName(name->put());
}

HRESULT Self::InitMultipartForm() {
  return read_multipart_form(asp_.request.get(), asp_.response.get(), &multipart_form_);
}
