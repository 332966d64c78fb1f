// The objects of a request of a host that has no requests: the component asks for them when it is made, and these have
// nothing. A host that serves pages answers here; sdk/zelto/asp.h says what.
#pragma once

#include <korlib_host/dispatch_object.h>
#include <zelto/asp.h>

#include <span>

namespace example {

namespace asp = ZeltoTypeLibrary;
using korlib::DispatchObject;

class Request final : public DispatchObject<Request, asp::IRequest> {
 public:
  static std::span<const korlib::Member> members() { return {}; }
  HRESULT get_Item(BSTR, IDispatch**) override { return E_NOTIMPL; }
  HRESULT get_QueryString(asp::IRequestDictionary**) override { return E_NOTIMPL; }
  HRESULT get_Form(asp::IRequestDictionary**) override { return E_NOTIMPL; }
  HRESULT get_ServerVariables(asp::IRequestDictionary**) override { return E_NOTIMPL; }
  HRESULT get_ClientCertificate(asp::IRequestDictionary**) override { return E_NOTIMPL; }
  HRESULT get_Cookies(asp::IRequestDictionary**) override { return E_NOTIMPL; }
  HRESULT get_TotalBytes(LONG*) override { return E_NOTIMPL; }
  HRESULT BinaryRead(VARIANT*, VARIANT*) override { return E_NOTIMPL; }
};

// A response of which only Write is left to be written.
template <class Derived>
class ResponseOfText : public DispatchObject<Derived, asp::IResponse> {
 public:
  HRESULT BinaryWrite(VARIANT) override { return E_NOTIMPL; }
  HRESULT AddHeader(BSTR, BSTR) override { return E_NOTIMPL; }
  HRESULT AppendToLog(BSTR) override { return E_NOTIMPL; }
  HRESULT get_Status(BSTR*) override { return E_NOTIMPL; }
  HRESULT put_Status(BSTR) override { return E_NOTIMPL; }
  HRESULT get_CodePage(LONG*) override { return E_NOTIMPL; }
};

class Server final : public DispatchObject<Server, asp::IServer> {
 public:
  static std::span<const korlib::Member> members() { return {}; }
  HRESULT HTMLEncode(BSTR, BSTR*) override { return E_NOTIMPL; }
  HRESULT URLEncode(BSTR, BSTR*) override { return E_NOTIMPL; }
  HRESULT MapPath(BSTR, BSTR*) override { return E_NOTIMPL; }
  HRESULT CreateObject(BSTR, IDispatch**) override { return E_NOTIMPL; }
};

class Application final : public DispatchObject<Application, asp::IApplicationObject> {
 public:
  static std::span<const korlib::Member> members() { return {}; }
  HRESULT get_Value(BSTR, VARIANT*) override { return E_NOTIMPL; }
  HRESULT put_Value(BSTR, VARIANT) override { return E_NOTIMPL; }
  HRESULT putref_Value(BSTR, VARIANT) override { return E_NOTIMPL; }
  HRESULT Lock() override { return E_NOTIMPL; }
  HRESULT UnLock() override { return E_NOTIMPL; }
  HRESULT get_Contents(asp::IVariantDictionary**) override { return E_NOTIMPL; }
};

}  // namespace example
