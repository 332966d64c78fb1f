#include "activation/failure.h"

#include <korlib/errorinfo.h>
#include <korlib/ptr.h>
#include <korlib_host/unicode.h>

namespace korlib::activation {

HRESULT fail(HRESULT hr, std::string_view description) {
  std::wstring text = to_wide(description);
  wchar_t source[] = L"Activation";
  CComPtr<ICreateErrorInfo> info;
  CComPtr<IErrorInfo> readable;
  if (SUCCEEDED(CreateErrorInfo(info.put())) && SUCCEEDED(info->SetSource(source)) &&
      SUCCEEDED(info->SetDescription(text.data())) && SUCCEEDED(info.query(readable.put()))) {
    SetErrorInfo(0, readable.get());
  }
  return hr;
}

}  // namespace korlib::activation
