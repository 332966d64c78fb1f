#include "frame/host.h"

#include <korlib/activation.h>
#include <korlib/comvariant.h>
#include <korlib/ptr.h>

HRESULT new_host_stream(IKorLibStream** stream) {
  *stream = nullptr;
  CComPtr<IKorLibStream> spStream;
  RETURN_IF_FAILED(CoCreateInstance(CLSID_KorLibStream, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                    korlib::iid_of<IKorLibStream>, spStream.put_void()));
  if (!spStream) return E_FAIL;
  RETURN_IF_FAILED(spStream->Open(korlib::omitted(), 0, -1, nullptr, nullptr));
  *stream = spStream.detach();
  return S_OK;
}

HRESULT read_text_file(BSTR path, BSTR charset, BSTR* text) {
  *text = nullptr;
  CComPtr<IKorLibStream> spStream;
  RETURN_IF_FAILED(new_host_stream(spStream.put()));
  RETURN_IF_FAILED(spStream->put_Charset(charset));
  RETURN_IF_FAILED(spStream->LoadFromFile(path));
  return spStream->ReadText(adReadAll, text);
}
