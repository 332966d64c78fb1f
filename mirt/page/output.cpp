// Text to the output, headers and log lines to the host.
#include "frame/error.h"
#include "page/mirt_impl.h"
#include "page/text.h"

namespace {

using Self = GIMirtImpl<IMirt>;

}  // namespace

STDMETHODIMP Self::Write(BSTR text, VARIANT_BOOL encode) {
  if (encode == VARIANT_FALSE || SysStringLen(text) == 0) return write_output(text);
  CComBSTR encoded;
  if (self_encode_) {
    RETURN_IF_FAILED(HTMLEncode(text, encoded.put()));
  } else {
    if (!asp_.server) return E_FAIL;
    RETURN_IF_FAILED(asp_.server->HTMLEncode(text, encoded.put()));
  }
  return write_output(encoded);
}

STDMETHODIMP Self::ProcessTemplate(BSTR text) try {
  const CComPtr<IDispatch> alive(owner_);
  return CTemplatorConcept::Process(text);
} catch (...) {
  return mirt::hresult_from_exception();
}

STDMETHODIMP Self::DrawTemplate(BSTR name) try {
  const CComPtr<IDispatch> alive(owner_);
  return templates_.draw(korlib::view_of(name));
} catch (...) {
  return mirt::hresult_from_exception();
}

STDMETHODIMP Self::Redirect(BSTR url) {
  if (!asp_.response) return E_FAIL;
  const CComBSTR status(L"302 Object moved");
  const CComBSTR header(L"Location");
  if (!status.get() || !header.get()) return E_OUTOFMEMORY;
  RETURN_IF_FAILED(asp_.response->put_Status(status));
  return asp_.response->AddHeader(header, url);
}

STDMETHODIMP Self::AddLog(BSTR first, BSTR second) {
  if (!asp_.response) return E_FAIL;
  const CComBSTR line = page::join({L"[", korlib::view_of(first), L":", korlib::view_of(second), L"]"});
  return line ? asp_.response->AppendToLog(line) : E_OUTOFMEMORY;
}

STDMETHODIMP Self::AddMessage(VARIANT* message, BSTR key) try {
  return message ? messages_.add(*message, korlib::view_of(key)) : E_POINTER;
} catch (...) {
  return mirt::hresult_from_exception();
}

STDMETHODIMP Self::MessageExists(VARIANT* key, VARIANT_BOOL* exists) try {
  if (!key || !exists) return E_POINTER;
  *exists = VARIANT_FALSE;
  bool exist = false;
  RETURN_IF_FAILED(messages_.exist(*key, &exist));
  *exists = exist ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
} catch (...) {
  return mirt::hresult_from_exception();
}
