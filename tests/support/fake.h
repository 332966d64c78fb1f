// A script object made of functions and values, which remembers how it was used.
//
//   CComPtr<FakeScript> script = FakeScript::make();
//   script->value(L"title", L"Hello");
//   script->function(L"On_StartProcess", [](const Arguments& arguments) { return CComVariant(false); });
//
// It behaves like the namespace of a page's script: names in exact letter case; reading a function as a
// property answers DISP_E_MEMBERNOTFOUND, and so does calling a value; a value that is written keeps
// what it is given. Unknown names are DISP_E_UNKNOWNNAME.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <korlib/comvariant.h>
#include <korlib/ptr.h>

#include "support/late_bound.h"

namespace test {

using Arguments = std::vector<CComVariant>;  // in the order of writing, references followed

class FakeScript final : public IDispatch {
 public:
  // A function either gives its value or fails with a code.
  using Function = std::function<CComVariant(const Arguments&)>;
  using FallibleFunction = std::function<HRESULT(const Arguments&, VARIANT* result)>;

  struct Call {
    std::wstring name;
    WORD flags;
    Arguments arguments;
  };

  static CComPtr<FakeScript> make();

  // Members; naming one again replaces it. An empty name is the default member.
  void function(const std::wstring& name, Function body);
  void fallible(const std::wstring& name, FallibleFunction body);
  void failing(const std::wstring& name, HRESULT hr, std::wstring description = {});  // with error information
  template <class Value>
  void value(const std::wstring& name, const Value& value) {
    set_value(name, value_of(value));
  }
  // A name that is written first comes to be, as a variable of a script would; off at first.
  void accept_new_names() { accepts_new_names_ = true; }
  void refuse(const std::wstring& name, HRESULT hr) { member(name).refusal = hr; }   // to be written
  void hide(const std::wstring& name, HRESULT hr) { member(name).unreadable = hr; }  // to be read
  void remove(const std::wstring& name);
  // Every look-up of a name that is not there fails with this code.
  void fail_unknown_names(HRESULT hr) { unknown_name_ = hr; }
  // Names that are not there, and functions that are read, fail in these words; at first in none.
  void refuse_in_words(std::wstring words) { refusal_words_ = std::move(words); }

  const CComVariant& current(const std::wstring& name) const;        // of a value; empty for none
  const std::vector<Call>& calls() const { return calls_; }          // of functions, and writes
  std::vector<std::wstring> called() const;                          // their names
  const std::vector<std::wstring>& asked() const { return asked_; }  // names that were looked up, known or not
  void forget_calls() {
    calls_.clear();
    asked_.clear();
  }
  ULONG references() const { return references_; }
  static int alive();  // objects of this class that have not gone

  STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
  ULONG AddRef() override { return ++references_; }
  ULONG Release() override;
  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** info) override;
  STDMETHODIMP GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID, DISPID* ids) override;
  STDMETHODIMP Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO*,
                      UINT*) override;

 private:
  struct Member {
    std::wstring name;
    FallibleFunction body;  // empty for a value
    CComVariant value;
    HRESULT refusal = S_OK;
    HRESULT unreadable = S_OK;
    bool is_there = true;
  };

  FakeScript();
  ~FakeScript();
  void set_value(const std::wstring& name, CComVariant value);
  Member& member(const std::wstring& name);  // made when missing
  DISPID find(const std::wstring& name) const;
  HRESULT run(const Member& member, WORD flags, const Arguments& arguments, VARIANT* result);

  ULONG references_ = 1;
  bool accepts_new_names_ = false;
  HRESULT unknown_name_ = DISP_E_UNKNOWNNAME;
  std::wstring refusal_words_;
  std::vector<Member> members_;  // the identifier of members_[i] is i; members_[0] is the default member
  std::vector<Call> calls_;
  std::vector<std::wstring> asked_;
};

}  // namespace test
