// The request of a page, made by a test, and the record of calls that all its intrinsic objects share.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <korlib/comvariant.h>
#include <korlib_host/dispatch_object.h>
#include <zelto/asp.h>

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

}  // namespace fake
