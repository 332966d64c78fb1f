// The request of a page: its submitted fields, and the command among them.
#include <utility>

#include <korlib/comvariant.h>

#include "frame/error.h"
#include "page/mirt_impl.h"
#include "upload/intake.h"

namespace {

using Self = GIMirtImpl<IMirt>;
using ZeltoTypeLibrary::IRequestDictionary;
using ZeltoTypeLibrary::IStringList;

constexpr std::wstring_view kFormType = L"application/x-www-form-urlencoded";

HRESULT hand_out(const CComPtr<IRequestDictionary>& fields, IDispatch** out) {
  return fields ? fields.query(out) : E_FAIL;
}

}  // namespace

STDMETHODIMP Self::get_Request(IDispatch** request) {
  if (!request) return E_POINTER;
  *request = nullptr;
  const CComPtr<ZeltoTypeLibrary::IRequest> asp = asp_.request;
  if (!asp) return E_FAIL;
  CComPtr<IRequestDictionary> fields;
  CComVariant method;
  RETURN_IF_FAILED(mirt::server_variable(asp.get(), L"HTTP_METHOD", &method));
  if (korlib::view_of(method.bstrVal) == L"POST") {
    if (multipart_form_) return multipart_form_.query(request);
    CComVariant type;
    RETURN_IF_FAILED(mirt::server_variable(asp.get(), L"HTTP_CONTENT_TYPE", &type));
    if (korlib::view_of(type.bstrVal).starts_with(kFormType)) {
      RETURN_IF_FAILED(asp->get_Form(fields.put()));
      return hand_out(fields, request);
    }
  }
  RETURN_IF_FAILED(asp->get_QueryString(fields.put()));
  return hand_out(fields, request);
}

HRESULT Self::read_command() {
  CComPtr<IDispatch> request;
  RETURN_IF_FAILED(get_Request(request.put()));
  CComPtr<IRequestDictionary> fields;
  RETURN_IF_FAILED(request.query(fields.put()));
  CComBSTR field;
  RETURN_IF_FAILED(memory_.get_command_field(&field));
  CComVariant value;
  RETURN_IF_FAILED(fields->get_Item(korlib::borrowed(field.get()), &value));
  RETURN_IF_FAILED(value.change_type(VT_BSTR));
  command_.attach(std::exchange(value.bstrVal, nullptr));
  return S_OK;
}

HRESULT Self::InitMultipartForm() {
  RETURN_IF_FAILED(read_multipart_form(asp_.request.get(), asp_.response.get(), &multipart_form_));
  shared_form_.share(asp_.request.get(), multipart_form_.get());
  return S_OK;
}

STDMETHODIMP Self::ToArray(IDispatch* collection, SAFEARRAY** array) {
  if (!array || !collection) return E_POINTER;
  CComPtr<IStringList> list;
  RETURN_IF_FAILED(collection->QueryInterface(korlib::iid_of<IStringList>, list.put_void()));
  int count = 0;
  // Without a count there is no array, and that is no failure.
  if (!mirt::succeeded_or_forgotten(list->get_Count(&count)) || count < 0) return S_OK;
  CComSafeArray values(VT_VARIANT, static_cast<ULONG>(count));
  if (!values) return E_OUTOFMEMORY;
  for (LONG i = 0; i < count; ++i) {
    CComVariant value;
    // An item that cannot be read stays empty.
    if (mirt::succeeded_or_forgotten(list->get_Item(korlib::long_variant(i + 1), &value)))
      VariantCopy(&values.data<VARIANT>()[i], &value);
  }
  *array = values.detach();
  return S_OK;
}
