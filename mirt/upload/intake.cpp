#include "upload/intake.h"

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

#include <korlib/comvariant.h>
#include <korlib/winapi.h>

#include "frame/error.h"
#include "frame/intrinsics.h"
#include "upload/parts.h"
#include "upload/shared_form.h"
#include "upload/upload_classes.h"

using ZeltoTypeLibrary::IRequest;
using ZeltoTypeLibrary::IRequestDictionary;
using ZeltoTypeLibrary::IResponse;

namespace {

constexpr std::wstring_view kMultipart = L"multipart/form-data;";
constexpr std::wstring_view kBoundary = L"boundary=";

// "--" and everything after "boundary=", quotes and further parameters included; empty when there is
// nothing. A boundary that is too long is cut and then matches no delimiter line.
std::string delimiter_of(const std::wstring& content_type) {
  const std::size_t at = content_type.find(kBoundary);
  if (at == std::wstring::npos) return {};
  char bytes[256];
  std::size_t converted = 0;
  if (wcstombs_s(&converted, bytes, content_type.c_str() + at + kBoundary.size(), sizeof bytes) != 0) return {};
  return bytes[0] ? std::string("--").append(bytes) : std::string();
}

bool is_number(std::wstring_view text) {
  return !text.empty() && std::ranges::all_of(text, [](wchar_t c) { return c >= L'0' && c <= L'9'; });
}

// TotalBytes ends where a LONG does: a host gives the largest one, or a negative number, for more. The
// announced length is then only in the server variables, as text.
std::wstring size_text(IRequest* request, LONG total) {
  CComVariant announced;
  const bool fits = total >= 0 && total < std::numeric_limits<LONG>::max();
  if (!fits && SUCCEEDED(mirt::server_variable(request, L"CONTENT_LENGTH", &announced))) {
    const std::wstring_view text = korlib::view_of(announced.bstrVal);
    if (is_number(text)) return std::wstring(text);
  }
  return std::to_wstring(total);
}

HRESULT raise_unread(IRequest* request, HRESULT hr, LONG read, LONG total) {
  if (hr != E_FAIL || read != 0) return RaiseError(E_FAIL, L"Mirt", L"Upload failed.");
  const std::wstring text = L"Upload size exceeds maximum limit.[" + size_text(request, total) + L"B]";
  return RaiseError(E_FAIL, L"Mirt", text.c_str());
}

HRESULT read_body(IRequest* request, CComVariant* body) {
  LONG total = 0;
  RETURN_IF_FAILED(request->get_TotalBytes(&total));
  CComVariant count(total);
  const HRESULT hr = request->BinaryRead(&count, body);
  return SUCCEEDED(hr) ? S_OK : raise_unread(request, hr, count.lVal, total);
}

}  // namespace

HRESULT read_multipart_form(IRequest* request, IResponse* response, CComPtr<IRequestDictionary>* form) {
  return mirt::guarded([&] {
    if (!request || !response) return E_FAIL;
    CComVariant type;
    RETURN_IF_FAILED(mirt::server_variable(request, L"HTTP_CONTENT_TYPE", &type));
    const std::wstring content_type(korlib::view_of(type.bstrVal));
    if (!content_type.starts_with(kMultipart)) return S_OK;
    const std::string delimiter = delimiter_of(content_type);
    if (delimiter.empty()) return S_OK;

    CComVariant body;
    RETURN_IF_FAILED(read_body(request, &body));
    if (body.vt != (VT_ARRAY | VT_UI1) || !body.parray || body.parray->cDims != 1) {
      if (!*form) *form = SharedForm::find(request);
      return S_OK;
    }
    RETURN_IF_FAILED(g_oCF_MultipartForm.CreateInstance(nullptr, korlib::iid_of<IRequestDictionary>, form->put_void()));
    LONG code_page = 0;
    RETURN_IF_FAILED(response->get_CodePage(&code_page));
    const SAFEARRAY& bytes = *body.parray;
    return add_parts(static_cast<const char*>(bytes.pvData), bytes.rgsabound[0].cElements, delimiter.c_str(),
                     static_cast<UINT>(code_page), *static_cast<GMultipartForm*>(form->get()));
  });
}
