#include "page/request_fields.h"

#include "frame/error.h"
#include "upload/intake.h"

namespace page {
namespace {

using ZeltoTypeLibrary::IRequest;
using ZeltoTypeLibrary::IRequestDictionary;
using ZeltoTypeLibrary::IStringList;

constexpr std::wstring_view kFormType = L"application/x-www-form-urlencoded";

HRESULT hand_out(const CComPtr<IRequestDictionary>& fields, IDispatch** out) {
  return fields ? fields.query(out) : E_FAIL;
}

// A field is found if it is a list with at least one value.
bool find_in(IRequestDictionary* fields, BSTR name, CComVariant* value) {
  if (!fields || !mirt::succeeded_or_forgotten(fields->get_Item(korlib::borrowed(name), value->put()))) return false;
  if (value->vt != VT_DISPATCH) return false;
  const CComQIPtr<IStringList> list(value->pdispVal);
  int count = 0;
  return list && mirt::succeeded_or_forgotten(list->get_Count(&count)) && count > 0;
}

using GetCollection = HRESULT (IRequest::*)(IRequestDictionary**);

bool find_in(IRequest* request, GetCollection get, BSTR name, CComVariant* value) {
  CComPtr<IRequestDictionary> fields;
  return mirt::succeeded_or_forgotten((request->*get)(fields.put())) && find_in(fields.get(), name, value);
}

}  // namespace

HRESULT RequestFields::read_upload() {
  RETURN_IF_FAILED(read_multipart_form(asp_.request.get(), asp_.response.get(), &upload_));
  shared_.share(asp_.request.get(), upload_.get());
  return S_OK;
}

HRESULT RequestFields::get_submitted(IDispatch** fields) const {
  *fields = nullptr;
  const CComPtr<IRequest> request = asp_.request;
  if (!request) return E_FAIL;
  CComPtr<IRequestDictionary> collection;
  CComVariant method;
  RETURN_IF_FAILED(mirt::server_variable(request.get(), L"HTTP_METHOD", &method));
  if (korlib::view_of(method.bstrVal) == L"POST") {
    if (upload_) return upload_.query(fields);
    CComVariant type;
    RETURN_IF_FAILED(mirt::server_variable(request.get(), L"HTTP_CONTENT_TYPE", &type));
    if (korlib::view_of(type.bstrVal).starts_with(kFormType)) {
      RETURN_IF_FAILED(request->get_Form(collection.put()));
      return hand_out(collection, fields);
    }
  }
  RETURN_IF_FAILED(request->get_QueryString(collection.put()));
  return hand_out(collection, fields);
}

HRESULT RequestFields::get_submitted(CComPtr<Collection>* fields) const {
  CComPtr<IDispatch> submitted;
  RETURN_IF_FAILED(get_submitted(submitted.put()));
  return submitted.query(fields->put());
}

bool RequestFields::find(BSTR name, CComVariant* value) const {
  IRequest* const request = asp_.request.get();
  const CComPtr<IRequestDictionary> upload = upload_;
  return find_in(request, &IRequest::get_ServerVariables, name, value) ||
         find_in(request, &IRequest::get_QueryString, name, value) ||
         find_in(request, &IRequest::get_Form, name, value) || find_in(upload.get(), name, value) ||
         find_in(request, &IRequest::get_Cookies, name, value) ||
         find_in(request, &IRequest::get_ClientCertificate, name, value);
}

HRESULT values_of(IDispatch* field, SAFEARRAY** array) {
  if (!field || !array) return E_POINTER;
  CComPtr<IStringList> list;
  RETURN_IF_FAILED(field->QueryInterface(korlib::iid_of<IStringList>, list.put_void()));
  int count = 0;
  if (!mirt::succeeded_or_forgotten(list->get_Count(&count)) || count < 0) return S_OK;
  CComSafeArray values(VT_VARIANT, static_cast<ULONG>(count));
  if (!values) return E_OUTOFMEMORY;
  for (LONG i = 0; i < count; ++i) {
    CComVariant value;
    if (mirt::succeeded_or_forgotten(list->get_Item(korlib::long_variant(i + 1), &value)))
      VariantCopy(&values.data<VARIANT>()[i], &value);
  }
  *array = values.detach();
  return S_OK;
}

}  // namespace page
