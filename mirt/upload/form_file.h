// GIFormFileImpl: one uploaded file.
#pragma once

#include <korlib/adostream.h>
#include <korlib/combstr.h>
#include <korlib/ptr.h>
#include <mirt/mirt.h>

template <class Interface>
class GIFormFileImpl;

// The only one there is; written as a specialisation so that its members are ordinary functions.
template <>
class GIFormFileImpl<IFormFile> : public IFormFile {
 public:
  // Makes an empty binary stream. Where that fails the file has none, and fill says so.
  GIFormFileImpl();

  // Gives the file its name, type and bytes; the stream is left at its beginning.
  HRESULT fill(CComBSTR name, CComBSTR type, const char* bytes, std::size_t length);

  STDMETHODIMP get_FileName(BSTR* name) override;
  STDMETHODIMP get_FileName2(BSTR* name) override;
  STDMETHODIMP get_ContentType(BSTR* type) override;
  STDMETHODIMP get_Stream(IDispatch** stream) override;

 protected:
  ~GIFormFileImpl() = default;

 private:
  HRESULT write(const char* bytes, std::size_t length);

  CComBSTR m_bstrFileName;
  CComBSTR m_bstrContentType;
  CComPtr<IKorLibStream> m_spStream;
};
