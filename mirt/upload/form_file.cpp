#include "upload/form_file.h"

#include <korlib/comvariant.h>

#include "frame/error.h"
#include "frame/host.h"

namespace {

HRESULT copy_text(std::wstring_view text, BSTR* copy) {
  return mirt::guarded(copy, [&] {
    *copy = korlib::new_bstr(text);
    return *copy ? S_OK : E_OUTOFMEMORY;
  });
}

}  // namespace

GIFormFileImpl<IFormFile>::GIFormFileImpl() {
  CComPtr<IKorLibStream> spStream;
  if (mirt::succeeded_or_forgotten(new_host_stream(spStream.put())) &&
      mirt::succeeded_or_forgotten(spStream->put_Type(adTypeBinary))) {
    m_spStream = std::move(spStream);
  }
}

HRESULT GIFormFileImpl<IFormFile>::fill(CComBSTR name, CComBSTR type, const char* bytes, std::size_t length) {
  m_bstrFileName = std::move(name);
  m_bstrContentType = std::move(type);
  if (!m_spStream) return E_FAIL;
  RETURN_IF_FAILED(write(bytes, length));
  return m_spStream->put_Position(0);
}

// One byte a write, through one array: the stream takes a copy of what it is given.
HRESULT GIFormFileImpl<IFormFile>::write(const char* bytes, std::size_t length) {
  CComSafeArray one(VT_UI1, 1);
  if (!one) return E_OUTOFMEMORY;
  VARIANT argument{};
  argument.vt = VT_ARRAY | VT_UI1;
  argument.parray = one.get();
  char* const slot = one.data<char>();
  for (std::size_t i = 0; i < length; ++i) {
    *slot = bytes[i];
    RETURN_IF_FAILED(m_spStream->Write(argument));
  }
  return S_OK;
}

STDMETHODIMP GIFormFileImpl<IFormFile>::get_FileName(BSTR* name) { return copy_text(m_bstrFileName.view(), name); }

STDMETHODIMP GIFormFileImpl<IFormFile>::get_FileName2(BSTR* name) {
  const std::wstring_view whole = m_bstrFileName.view();
  std::size_t separator = whole.rfind(L'\\');
  if (separator == std::wstring_view::npos) separator = whole.rfind(L'/');
  return copy_text(separator == std::wstring_view::npos ? whole : whole.substr(separator + 1), name);
}

STDMETHODIMP GIFormFileImpl<IFormFile>::get_ContentType(BSTR* type) {
  return copy_text(m_bstrContentType.view(), type);
}

STDMETHODIMP GIFormFileImpl<IFormFile>::get_Stream(IDispatch** stream) {
  return mirt::guarded(stream, [&] { return m_spStream ? m_spStream.query(stream) : E_FAIL; });
}
