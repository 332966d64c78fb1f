// The host's objects of the current request, as the objects bound to it hold them.
#pragma once

#include <korlib/comvariant.h>
#include <korlib/ptr.h>
#include <zelto/asp.h>
#include <zelto/context.h>

namespace mirt {

struct Intrinsics {
  CComPtr<ZeltoTypeLibrary::IServer> server;
  CComPtr<ZeltoTypeLibrary::IApplicationObject> application;
  CComPtr<ZeltoTypeLibrary::ISessionObject> session;  // null when the page has none
  CComPtr<ZeltoTypeLibrary::IRequest> request;
  CComPtr<ZeltoTypeLibrary::IResponse> response;

  // Stops at the first object that the context lacks or that is of another kind; a missing Session is
  // no failure.
  HRESULT take_from(IGetContextProperties* context);
};

// A server variable of the request as a VT_BSTR.
HRESULT server_variable(ZeltoTypeLibrary::IRequest* request, const wchar_t* name, CComVariant* text);

}  // namespace mirt
