// Parts of links that run a command of this page.
#include "page/mirt_impl.h"
#include "page/text.h"

namespace {

using Self = GIMirtImpl<IMirt>;
using ZeltoTypeLibrary::IServer;

// front + name=value& with both URL-encoded by the host.
HRESULT encoded_pair(IServer* server, std::wstring_view front, BSTR name, BSTR value, BSTR* out) {
  if (!server) return E_FAIL;
  CComBSTR encoded_name;
  CComBSTR encoded_value;
  RETURN_IF_FAILED(server->URLEncode(name, encoded_name.put()));
  RETURN_IF_FAILED(server->URLEncode(value, encoded_value.put()));
  *out = page::join({front, encoded_name.view(), L"=", encoded_value.view(), L"&"}).detach();
  return *out ? S_OK : E_OUTOFMEMORY;
}

}  // namespace

STDMETHODIMP Self::ToCommand(BSTR command, BSTR* link) {
  if (!link) return E_POINTER;
  *link = nullptr;
  CComBSTR field;
  RETURN_IF_FAILED(memory_.get_command_field(&field));
  return encoded_pair(asp_.server.get(), L"?", field, command, link);
}

STDMETHODIMP Self::ToParameter(BSTR name, BSTR value, BSTR* parameter) {
  if (!parameter) return E_POINTER;
  *parameter = nullptr;
  return encoded_pair(asp_.server.get(), L"", name, value, parameter);
}
