// The marks that show a value, and those that draw another template file.
#include <korlib/comvariant.h>

#include "frame/error.h"
#include "page/mirt_impl.h"
#include "templator/mark_value.h"

namespace {

using Self = GIMirtImpl<IMirt>;
using ZeltoTypeLibrary::IRequest;
using ZeltoTypeLibrary::IRequestDictionary;
using ZeltoTypeLibrary::IStringList;

using Collection = HRESULT (IRequest::*)(IRequestDictionary**);

// A value list with something in it is what counts as found; a collection that fails is passed over.
bool find_field(IRequestDictionary* fields, BSTR name, CComVariant* value) {
  if (!fields || !mirt::succeeded_or_forgotten(fields->get_Item(korlib::borrowed(name), value->put()))) return false;
  if (value->vt != VT_DISPATCH) return false;
  const CComQIPtr<IStringList> list(value->pdispVal);
  int count = 0;
  return list && mirt::succeeded_or_forgotten(list->get_Count(&count)) && count > 0;
}

bool find_in(IRequest* request, Collection collection, BSTR name, CComVariant* value) {
  CComPtr<IRequestDictionary> fields;
  return mirt::succeeded_or_forgotten((request->*collection)(fields.put())) && find_field(fields.get(), name, value);
}

// Server variables come first, unlike in the host's own search.
bool find_in_request(IRequest* request, IRequestDictionary* multipart, BSTR name, CComVariant* value) {
  return find_in(request, &IRequest::get_ServerVariables, name, value) ||
         find_in(request, &IRequest::get_QueryString, name, value) ||
         find_in(request, &IRequest::get_Form, name, value) || find_field(multipart, name, value) ||
         find_in(request, &IRequest::get_Cookies, name, value) ||
         find_in(request, &IRequest::get_ClientCertificate, name, value);
}

}  // namespace

HRESULT Self::write_value(VARIANT* value, const CMarkData& mark, VARIANT_BOOL encode) {
  RETURN_IF_FAILED(ChangeToBSTR(value, &mark.Params, null_is_empty_));
  return Write(value->bstrVal, encode);
}

HRESULT Self::OnMarked_Property(const CMarkData& mark, BSTR name, VARIANT_BOOL encode) {
  CEvent member;
  RETURN_IF_FAILED(handler_.GetEvent(name, member));
  CComVariant text;
  RETURN_IF_FAILED(script_member_text(member, owner_, mark, null_is_empty_, &text));
  return Write(text.bstrVal, encode);
}

HRESULT Self::OnMarked_View(const CMarkData& mark, BSTR name, VARIANT_BOOL encode) {
  const CComPtr<IKorLibDictionary> view = view_;
  CComVariant value;
  RETURN_IF_FAILED(read_item(view.get(), name, &value));
  return write_value(&value, mark, encode);
}

HRESULT Self::OnMarked_Session(const CMarkData& mark, BSTR name, VARIANT_BOOL encode) {
  CComVariant value;
  RETURN_IF_FAILED(read_value(asp_.session.get(), name, &value));
  return write_value(&value, mark, encode);
}

HRESULT Self::OnMarked_Application(const CMarkData& mark, BSTR name, VARIANT_BOOL encode) {
  CComVariant value;
  RETURN_IF_FAILED(read_value(asp_.application.get(), name, &value));
  return write_value(&value, mark, encode);
}

HRESULT Self::OnMarked_Bag(const CMarkData& mark, BSTR name, VARIANT_BOOL encode) {
  CComPtr<IKorLibDictionary> bag;
  RETURN_IF_FAILED(get_session_bag(&bag));
  CComVariant value;
  RETURN_IF_FAILED(read_item(bag.get(), name, &value));
  return write_value(&value, mark, encode);
}

HRESULT Self::OnMarked_Request(const CMarkData& mark, BSTR name, VARIANT_BOOL encode) {
  if (!asp_.request) return E_FAIL;
  const CComPtr<IRequestDictionary> multipart = multipart_form_;
  CComVariant value;
  // A field that was not submitted shows as nothing.
  if (!find_in_request(asp_.request.get(), multipart.get(), name, &value)) return S_OK;
  return write_value(&value, mark, encode);
}

HRESULT Self::OnMarked_Command(BSTR name, VARIANT_BOOL encode) {
  CComBSTR text;
  if (SysStringLen(name) == 0) {
    RETURN_IF_FAILED(command_field(&text));
  } else {
    RETURN_IF_FAILED(ToCommand(name, text.put()));
  }
  return Write(text, encode);
}

HRESULT Self::OnMarked_ChildStatic(BSTR name) { return DrawTemplate(name); }

HRESULT Self::OnMarked_ChildDynamic(BSTR name) {
  const CComPtr<IKorLibDictionary> include = include_;
  CComVariant value;
  const HRESULT hr = read_item(include.get(), name, &value);
  if (FAILED(hr) || value.vt != VT_BSTR) return hr;
  return DrawTemplate(value.bstrVal);
}
