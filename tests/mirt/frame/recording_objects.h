// Objects of the component's interfaces that write down which member was called with what: for tests of
// the road from a name to a member.
#pragma once

#include <mirt/mirt.h>

#include <string>

#include <korlib/comvariant.h>
#include <korlib/dictionary.h>
#include <korlib/ptr.h>

#include "support/late_bound.h"

namespace test {

inline std::wstring shown(BSTR text) { return text ? std::wstring(korlib::view_of(text)) : L"null"; }
inline std::wstring shown(LONG number) { return std::to_wstring(number); }
inline std::wstring shown(VARIANT_BOOL truth) { return std::to_wstring(truth); }
inline std::wstring shown(const IUnknown* object) { return object ? L"object" : L"no object"; }
// "type:text".
inline std::wstring shown(const VARIANT* value) {
  CComVariant text;
  if (FAILED(VariantChangeType(&text, value, 0, VT_BSTR))) return std::to_wstring(value->vt);
  return std::to_wstring(value->vt) + L":" + std::wstring(korlib::view_of(text.bstrVal));
}

// What members log and answer. Lives on the test's stack and is not counted.
template <class Interface>
class Recording : public Interface {
 public:
  using interface_type = Interface;

  std::wstring log;
  HRESULT answer = S_OK;  // of every member; a failing one leaves its result alone

  STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<Interface, IDispatch, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return ++references; }
  ULONG Release() override { return --references; }
  STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return E_NOTIMPL;
  }

  ULONG references = 1;

 protected:
  template <class... Inputs>
  HRESULT note(const wchar_t* name, const Inputs&... inputs) {
    log += name;
    log += L"(";
    [[maybe_unused]] const wchar_t* comma = L"";  // without inputs it is not read
    ((log += comma, log += shown(inputs), comma = L","), ...);
    log += L")";
    return answer;
  }
  template <class... Inputs>
  HRESULT text(BSTR* out, const wchar_t* name, const Inputs&... inputs) {
    const HRESULT hr = note(name, inputs...);
    if (SUCCEEDED(hr)) *out = SysAllocString(name);
    return hr;
  }
  template <class... Inputs>
  HRESULT truth(VARIANT_BOOL* out, const wchar_t* name, const Inputs&... inputs) {
    const HRESULT hr = note(name, inputs...);
    if (SUCCEEDED(hr)) *out = VARIANT_TRUE;
    return hr;
  }
  template <class Object, class... Inputs>
  HRESULT object(Object** out, const wchar_t* name, const Inputs&... inputs) {
    const HRESULT hr = note(name, inputs...);
    if (SUCCEEDED(hr)) {
      AddRef();
      *out = reinterpret_cast<Object*>(static_cast<IDispatch*>(this));
    }
    return hr;
  }
};

#define RECORD(Name, Parameters, ...) \
  HRESULT Name Parameters override { return this->note(L## #Name __VA_OPT__(, ) __VA_ARGS__); }
#define RECORD_TEXT(Name, Parameters, ...) \
  HRESULT Name Parameters override { return this->text(out, L## #Name __VA_OPT__(, ) __VA_ARGS__); }
#define RECORD_TRUTH(Name, Parameters, ...) \
  HRESULT Name Parameters override { return this->truth(out, L## #Name __VA_OPT__(, ) __VA_ARGS__); }
#define RECORD_OBJECT(Name, Parameters, ...) \
  HRESULT Name Parameters override { return this->object(out, L## #Name __VA_OPT__(, ) __VA_ARGS__); }

template <class Interface>
class RecordingUtilityMembers : public Recording<Interface> {
 public:
  RECORD_TEXT(MakeKey, (LONG a, BSTR b, BSTR* out), a, b)
  RECORD_TEXT(MakeGUID, (VARIANT_BOOL a, BSTR* out), a)
  RECORD(Sleep, (LONG a), a)
  RECORD_TEXT(MD5, (VARIANT * a, LONG b, BSTR* out), a, b)
  RECORD_TEXT(SHA1, (VARIANT * a, LONG b, BSTR* out), a, b)
  RECORD_TRUTH(FindString, (VARIANT * a, VARIANT* b, VARIANT_BOOL* out), a, b)
  RECORD_TEXT(HanToZen, (BSTR a, BSTR* out), a)
  RECORD_TEXT(ZenToHan, (BSTR a, BSTR* out), a)
  RECORD_TEXT(SubmitDecode, (BSTR a, BSTR* out), a)
  RECORD_TEXT(Trim, (BSTR a, BSTR* out), a)
  RECORD_TEXT(HTMLEncode, (BSTR a, BSTR* out), a)
  RECORD_TEXT(Base64Encode, (VARIANT * a, LONG b, BSTR* out), a, b)
  RECORD_TEXT(URLEncode, (VARIANT * a, LONG b, BSTR* out), a, b)
  HRESULT Base64Decode(BSTR a, LONG b, VARIANT* out) override { return value(out, L"Base64Decode", a, b); }
  HRESULT URLDecode(BSTR a, LONG b, VARIANT* out) override { return value(out, L"URLDecode", a, b); }

 private:
  HRESULT value(VARIANT* out, const wchar_t* name, BSTR a, LONG b) {
    const HRESULT hr = this->note(name, a, b);
    if (SUCCEEDED(hr)) CComVariant(name).detach_to(out);
    return hr;
  }
};

using RecordingUtility = RecordingUtilityMembers<IUtility>;

class RecordingMirt : public RecordingUtilityMembers<IMirt> {
 public:
  CComPtr<IDispatch> view;  // what get_View gives; null makes it fail, as outside of Process
  RECORD_OBJECT(get_Bag, (IDispatch * *out))
  RECORD(putref_Script, (IDispatch * a), a)
  RECORD_OBJECT(get_Script, (IDispatch * *out))
  RECORD(put_Command, (BSTR a), a)
  RECORD_TEXT(get_Command, (BSTR * out))
  RECORD(put_Template, (BSTR a), a)
  RECORD_TEXT(get_Template, (BSTR * out))
  RECORD(put_TemplateFolder, (BSTR a), a)
  RECORD_TEXT(get_TemplateFolder, (BSTR * out))
  RECORD(put_TemplateExt, (BSTR a), a)
  RECORD_TEXT(get_TemplateExt, (BSTR * out))
  RECORD(put_TemplateCharset, (BSTR a), a)
  RECORD_TEXT(get_TemplateCharset, (BSTR * out))
  RECORD(put_DefaultTemplate, (BSTR a), a)
  RECORD_TEXT(get_DefaultTemplate, (BSTR * out))
  RECORD(put_TemplatePermissionPath, (BSTR a), a)
  RECORD_TEXT(get_TemplatePermissionPath, (BSTR * out))
  RECORD(put_CommandName, (BSTR a), a)
  RECORD_TEXT(get_CommandName, (BSTR * out))
  RECORD(putref_Output, (IUnknown * a), a)
  RECORD_OBJECT(get_Output, (IUnknown * *out))
  HRESULT get_View(IDispatch** out) override {
    *out = nullptr;
    this->note(L"get_View");
    return view ? view.copy_to(out) : E_FAIL;
  }
  RECORD_OBJECT(get_Include, (IDispatch * *out))
  RECORD_OBJECT(get_Request, (IDispatch * *out))
  RECORD(put_Name, (BSTR a), a)
  RECORD_TEXT(get_Name, (BSTR * out))
  RECORD(put_Backable, (VARIANT_BOOL a), a)
  RECORD_TRUTH(get_Backable, (VARIANT_BOOL * out))
  RECORD(put_NullIsEmpty, (VARIANT_BOOL a), a)
  RECORD_TRUTH(get_NullIsEmpty, (VARIANT_BOOL * out))
  RECORD(put_SubmitDecodeOnPutInto, (VARIANT_BOOL a), a)
  RECORD_TRUTH(get_SubmitDecodeOnPutInto, (VARIANT_BOOL * out))
  RECORD(put_CacheTemplate, (VARIANT_BOOL a), a)
  RECORD_TRUTH(get_CacheTemplate, (VARIANT_BOOL * out))
  RECORD(put_SelfEncode, (VARIANT_BOOL a), a)
  RECORD_TRUTH(get_SelfEncode, (VARIANT_BOOL * out))
  RECORD(AddScript, (IDispatch * a), a)
  RECORD(PutIntoBag, (BSTR a, VARIANT_BOOL b), a, b)
  RECORD(PutIntoView, (BSTR a, VARIANT_BOOL b), a, b)
  RECORD(PutIntoProp, (BSTR a, VARIANT_BOOL b), a, b)
  RECORD(Write, (BSTR a, VARIANT_BOOL b), a, b)
  RECORD(Abandon, ())
  RECORD(AddLog, (BSTR a, BSTR b), a, b)
  HRESULT FireEvent(BSTR name, VARIANT* argument, VARIANT* result, VARIANT_BOOL* exists) override {
    RETURN_IF_FAILED(this->note(L"FireEvent", name, argument, result));
    VariantClear(result);
    CComVariant(L"fired").detach_to(result);
    *exists = VARIANT_TRUE;
    return S_OK;
  }
  RECORD(AddMessage, (VARIANT * a, BSTR b), a, b)
  RECORD_TRUTH(MessageExists, (VARIANT * a, VARIANT_BOOL* out), a)
  RECORD(ProcessTemplate, (BSTR a), a)
  RECORD(Process, ())
  HRESULT ToArray(IDispatch* a, SAFEARRAY** out) override {
    RETURN_IF_FAILED(this->note(L"ToArray", a));
    *out = SafeArrayCreateVector(VT_VARIANT, 0, 2);
    return S_OK;
  }
  RECORD_TEXT(ToCommand, (BSTR a, BSTR* out), a)
  RECORD_TEXT(ToParameter, (BSTR a, BSTR b, BSTR* out), a, b)
  RECORD(Redirect, (BSTR a), a)
  RECORD(DrawTemplate, (BSTR a), a)
  RECORD_OBJECT(NewADOCommand, (VARIANT * a, BSTR b, LONG c, IDispatch** out), a, b, c)
  RECORD_OBJECT(NewTemplator, (BSTR a, IMirtedTemplator** out), a)
  RECORD_OBJECT(NewMail, (BSTR a, LONG b, IDispatch** out), a, b)
};

class RecordingTextTemplator : public Recording<ITextTemplator> {
 public:
  RECORD(putref_Script, (IDispatch * a), a)
  RECORD_OBJECT(get_Script, (IDispatch * *out))
  RECORD(putref_Stream, (IUnknown * a), a)
  RECORD_OBJECT(get_Stream, (IUnknown * *out))
  RECORD(ProcessTemplateFile, (BSTR a, BSTR b), a, b)
  RECORD(ProcessTemplate, (BSTR a), a)
  RECORD(Write, (BSTR a), a)
  RECORD_TEXT(Flush, (BSTR * out))
};

class RecordingMirtedTemplator : public Recording<IMirtedTemplator> {
 public:
  RECORD(putref_Script, (IDispatch * a), a)
  RECORD_OBJECT(get_Script, (IDispatch * *out))
  RECORD_OBJECT(get_Main, (IMirt * *out))
  RECORD(putref_Stream, (IUnknown * a), a)
  RECORD_OBJECT(get_Stream, (IUnknown * *out))
  RECORD(ProcessTemplateFile, (BSTR a, BSTR b), a, b)
  RECORD(ProcessTemplate, (BSTR a), a)
  RECORD(Write, (BSTR a, VARIANT_BOOL b), a, b)
  RECORD_TEXT(Flush, (BSTR * out))
};

class RecordingFormFile : public Recording<IFormFile> {
 public:
  RECORD_TEXT(get_FileName, (BSTR * out))
  RECORD_TEXT(get_FileName2, (BSTR * out))
  RECORD_TEXT(get_ContentType, (BSTR * out))
  RECORD_OBJECT(get_Stream, (IDispatch * *out))
};

#undef RECORD
#undef RECORD_TEXT
#undef RECORD_TRUTH
#undef RECORD_OBJECT

}  // namespace test
