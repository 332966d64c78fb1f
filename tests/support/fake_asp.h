// The intrinsic objects of a page, made by a test: plain data that shows what a component did with them,
// and failures where the test wants them.
//
//   fake::Asp asp;
//   asp.request->query_string->set(L"c", {L"Save"});
//   asp.calls->fail("Response.Write", E_ABORT);
//   korlib_host::ContextScope scope(asp.context.get());
//
// The objects serve one thread.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <zelto/context.h>

#include "support/fake_request.h"

namespace fake {

class Response final : public korlib::DispatchObject<Response, asp::IResponse> {
 public:
  explicit Response(CallsRef calls) : calls_(std::move(calls)) {}
  static std::span<const korlib::Member> members();
  HRESULT Write(VARIANT text) override;
  HRESULT BinaryWrite(VARIANT bytes) override;
  HRESULT AddHeader(BSTR name, BSTR value) override;
  HRESULT AppendToLog(BSTR text) override;
  HRESULT get_Status(BSTR* status) override;
  HRESULT put_Status(BSTR status) override;
  HRESULT get_CodePage(LONG* page) override;

  std::wstring text() const;  // all that was written
  Texts writes;
  Texts headers;  // "name: value"
  Texts log;
  std::wstring status = L"200 OK";
  LONG code_page = 65001;

 private:
  CallsRef calls_;
};

// HTMLEncode puts the text between angle quotes, so that a test sees who encoded; URLEncode is real.
class Server final : public korlib::DispatchObject<Server, asp::IServer> {
 public:
  explicit Server(CallsRef calls) : calls_(std::move(calls)) {}
  static std::span<const korlib::Member> members();
  HRESULT HTMLEncode(BSTR text, BSTR* encoded) override;
  HRESULT URLEncode(BSTR text, BSTR* encoded) override;
  HRESULT MapPath(BSTR path, BSTR* physical) override;
  HRESULT CreateObject(BSTR prog_id, IDispatch** object) override;

 private:
  CallsRef calls_;
};

using Values = std::map<std::wstring, CComVariant>;

// Remove is what it is good for; the rest answers E_NOTIMPL.
class Contents final : public korlib::DispatchObject<Contents, asp::IVariantDictionary> {
 public:
  Contents(CallsRef calls, std::shared_ptr<Values> values) : calls_(std::move(calls)), values_(std::move(values)) {}
  static std::span<const korlib::Member> members();
  HRESULT get_Item(VARIANT, VARIANT*) override { return E_NOTIMPL; }
  HRESULT put_Item(VARIANT, VARIANT) override { return E_NOTIMPL; }
  HRESULT putref_Item(VARIANT, VARIANT) override { return E_NOTIMPL; }
  HRESULT get_Key(VARIANT, VARIANT*) override { return E_NOTIMPL; }
  HRESULT get_Count(int* count) override;
  HRESULT get__NewEnum(IUnknown**) override { return E_NOTIMPL; }
  HRESULT Remove(VARIANT index) override;
  HRESULT RemoveAll() override;

 private:
  CallsRef calls_;
  std::shared_ptr<Values> values_;
};

class Session final : public korlib::DispatchObject<Session, asp::ISessionObject> {
 public:
  explicit Session(CallsRef calls) : calls_(std::move(calls)) {}
  static std::span<const korlib::Member> members();
  HRESULT get_SessionID(BSTR*) override { return E_NOTIMPL; }
  HRESULT get_Value(BSTR name, VARIANT* value) override;
  HRESULT put_Value(BSTR name, VARIANT value) override;
  HRESULT putref_Value(BSTR name, VARIANT value) override;
  HRESULT get_Timeout(LONG*) override { return E_NOTIMPL; }
  HRESULT put_Timeout(LONG) override { return E_NOTIMPL; }
  HRESULT Abandon() override { return E_NOTIMPL; }
  HRESULT get_Contents(asp::IVariantDictionary** contents) override;

  Values& values() { return *values_; }

 private:
  CallsRef calls_;
  std::shared_ptr<Values> values_ = std::make_shared<Values>();
};

class Application final : public korlib::DispatchObject<Application, asp::IApplicationObject> {
 public:
  explicit Application(CallsRef calls) : calls_(std::move(calls)) {}
  static std::span<const korlib::Member> members();
  HRESULT get_Value(BSTR name, VARIANT* value) override;
  HRESULT put_Value(BSTR, VARIANT) override { return E_NOTIMPL; }
  HRESULT putref_Value(BSTR, VARIANT) override { return E_NOTIMPL; }
  HRESULT Lock() override { return S_OK; }
  HRESULT UnLock() override { return S_OK; }
  HRESULT get_Contents(asp::IVariantDictionary**) override { return E_NOTIMPL; }

  Values values;

 private:
  CallsRef calls_;
};

// The context of a request: what it answers for each name.
class Context final : public IGetContextProperties {
 public:
  explicit Context(CallsRef calls) : calls_(std::move(calls)) {}
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<IGetContextProperties, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return ++references_; }
  ULONG Release() override;
  HRESULT Count(LONG* count) override;
  HRESULT GetProperty(BSTR name, VARIANT* value) override;
  HRESULT EnumNames(IUnknown**) override { return E_NOTIMPL; }

  Values properties;

 private:
  ~Context() = default;
  ULONG references_ = 1;
  CallsRef calls_;
};

// A GET request of one page, with a session.
struct Asp {
  Asp();

  CallsRef calls = std::make_shared<Calls>();
  CComPtr<Server> server;
  CComPtr<Application> application;
  CComPtr<Request> request;
  CComPtr<Response> response;
  CComPtr<Session> session;
  CComPtr<Context> context;

  // A form post of the usual type.
  void post_form();
  // As a page that has no session state.
  void without_session();
};

}  // namespace fake
