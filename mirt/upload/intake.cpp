#include "upload/intake.h"

#include <string>
#include <string_view>

#include <korlib/comvariant.h>
#include <korlib/winapi.h>

#include "frame/error.h"
#include "upload/parts.h"
#include "upload/upload_classes.h"

using ZeltoTypeLibrary::IRequest;
using ZeltoTypeLibrary::IRequestDictionary;
using ZeltoTypeLibrary::IResponse;

namespace {

constexpr std::wstring_view kMultipart = L"multipart/form-data;";
constexpr std::wstring_view kBoundary = L"boundary=";

HRESULT read_content_type(IRequest* request, CComVariant* type) {
  CComPtr<IRequestDictionary> spVariables;
  RETURN_IF_FAILED(request->get_ServerVariables(spVariables.put()));
  if (!spVariables) return E_FAIL;
  const CComBSTR name(L"HTTP_CONTENT_TYPE");
  RETURN_IF_FAILED(spVariables->get_Item(korlib::borrowed(name.get()), type));
  return type->change_type(VT_BSTR);
}

// "--" and everything behind "boundary=", quotes and further parameters included; empty when there is
// nothing. A boundary that is too long is cut and then matches no delimiter line.
std::string delimiter_of(const std::wstring& content_type) {
  const std::size_t at = content_type.find(kBoundary);
  if (at == std::wstring::npos) return {};
  char bytes[256];
  std::size_t converted = 0;
  if (wcstombs_s(&converted, bytes, content_type.c_str() + at + kBoundary.size(), sizeof bytes) != 0) return {};
  return bytes[0] ? std::string("--").append(bytes) : std::string();
}

HRESULT raise_unread(HRESULT hr, LONG read, LONG total) {
  if (hr != E_FAIL || read != 0) return RaiseError(E_FAIL, L"Mirt", L"Upload failed.");
  const std::wstring text = L"Upload size exceeds maximum limit.[" + std::to_wstring(total) + L"B]";
  return RaiseError(E_FAIL, L"Mirt", text.c_str());
}

HRESULT read_body(IRequest* request, CComVariant* body) {
  LONG total = 0;
  RETURN_IF_FAILED(request->get_TotalBytes(&total));
  CComVariant count(total);
  const HRESULT hr = request->BinaryRead(&count, body);
  return SUCCEEDED(hr) ? S_OK : raise_unread(hr, count.lVal, total);
}

}  // namespace

HRESULT read_multipart_form(IRequest* request, IResponse* response, CComPtr<IRequestDictionary>* form) try {
  if (!request || !response) return E_FAIL;
  CComVariant type;
  RETURN_IF_FAILED(read_content_type(request, &type));
  const std::wstring content_type(korlib::view_of(type.bstrVal));
  if (!content_type.starts_with(kMultipart)) return S_OK;
  const std::string delimiter = delimiter_of(content_type);
  if (delimiter.empty()) return S_OK;

  CComVariant body;
  RETURN_IF_FAILED(read_body(request, &body));
  if (body.vt != (VT_ARRAY | VT_UI1) || !body.parray || body.parray->cDims != 1) return S_OK;
  RETURN_IF_FAILED(g_oCF_MultipartForm.CreateInstance(nullptr, korlib::iid_of<IRequestDictionary>, form->put_void()));
  LONG code_page = 0;
  RETURN_IF_FAILED(response->get_CodePage(&code_page));
  const SAFEARRAY& bytes = *body.parray;
  return add_parts(static_cast<const char*>(bytes.pvData), bytes.rgsabound[0].cElements, delimiter.c_str(),
                   static_cast<UINT>(code_page), *static_cast<GMultipartForm*>(form->get()));
} catch (...) {
  return mirt::hresult_from_exception();
}
