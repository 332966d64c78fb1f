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

#include <korlib/comvariant.h>
#include <korlib_host/dispatch_object.h>
#include <zelto/asp.h>
#include <zelto/context.h>

namespace fake {

namespace asp = ZeltoTypeLibrary;

// What was called, in order, and what is to fail.
class Calls {
 public:
  // The call of that name ("Response.Write") fails from now on, after `allowed` successes.
  void fail(const std::string& name, HRESULT hr, int allowed = 0) { failures_[name] = {hr, allowed}; }
  void succeed(const std::string& name) { failures_.erase(name); }
  // Failures come with words, as a host's do.
  void raise_words() { raises_ = true; }
  // Used by the objects: records the call and answers how it ends.
  HRESULT note(const std::string& name);
  int count(const std::string& name) const;

  std::vector<std::string> log;

 private:
  struct Failure {
    HRESULT hr;
    int allowed;
  };
  std::map<std::string, Failure> failures_;
  bool raises_ = false;
};
using CallsRef = std::shared_ptr<Calls>;

using Texts = std::vector<std::wstring>;

// Values of one name. Without an index: the only value as it is, several as text joined with ", ".
class StringList final : public korlib::DispatchObject<StringList, asp::IStringList> {
 public:
  StringList(CallsRef calls, std::vector<CComVariant> held) : values(std::move(held)), calls_(std::move(calls)) {}
  static std::span<const korlib::Member> members();
  HRESULT get_Item(VARIANT index, VARIANT* value) override;
  HRESULT get_Count(int* count) override;
  HRESULT get__NewEnum(IUnknown** enumerator) override;

  std::vector<CComVariant> values;

 private:
  CallsRef calls_;
};

// Names keep their case and order, and are found in any case. A name that is missing has an empty list.
class RequestDictionary final : public korlib::DispatchObject<RequestDictionary, asp::IRequestDictionary> {
 public:
  RequestDictionary(CallsRef calls, std::string name) : calls_(std::move(calls)), name_(std::move(name)) {}
  static std::span<const korlib::Member> members();
  HRESULT get_Item(VARIANT key, VARIANT* value) override;
  HRESULT get__NewEnum(IUnknown** names) override;
  HRESULT get_Count(int* count) override;
  HRESULT get_Key(VARIANT index, VARIANT* key) override;

  void set(const std::wstring& name, const Texts& texts);
  void set_values(const std::wstring& name, std::vector<CComVariant> values);
  void set_raw(const std::wstring& name, CComVariant value);  // what get_Item answers, list or not
  void clear() { entries_.clear(); }

 private:
  struct Entry {
    std::wstring name;
    CComVariant value;
  };
  CallsRef calls_;
  std::string name_;
  std::vector<Entry> entries_;
};

class Request final : public korlib::DispatchObject<Request, asp::IRequest> {
 public:
  explicit Request(const CallsRef& calls);
  static std::span<const korlib::Member> members();
  HRESULT get_Item(BSTR name, IDispatch** value) override;
  HRESULT get_QueryString(asp::IRequestDictionary** values) override;
  HRESULT get_Form(asp::IRequestDictionary** values) override;
  HRESULT get_ServerVariables(asp::IRequestDictionary** values) override;
  HRESULT get_ClientCertificate(asp::IRequestDictionary** values) override;
  HRESULT get_Cookies(asp::IRequestDictionary** values) override;
  HRESULT get_TotalBytes(LONG* bytes) override;
  HRESULT BinaryRead(VARIANT* count, VARIANT* data) override;

  CComPtr<RequestDictionary> query_string, form, server_variables, client_certificate, cookies;
  std::string body;
  LONG total_bytes = -1;         // -1: the size of `body`
  CComVariant read_count;        // what BinaryRead was asked for
  LONG read_before_failure = 0;  // what a BinaryRead that fails leaves in its count
  CComVariant body_value;        // what BinaryRead gives instead of bytes, unless empty

 private:
  HRESULT give(const char* name, const CComPtr<RequestDictionary>& from, asp::IRequestDictionary** values);
  CallsRef calls_;
};

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
