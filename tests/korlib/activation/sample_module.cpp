#include "korlib/activation/sample_module.h"

#include <atomic>
#include <cwchar>

#include <korlib/ptr.h>

namespace {

std::atomic<long> live{0};  // objects and class object references

class Sample final : public sample::ISample {
 public:
  explicit Sample(LONG number) : number_(number) { ++live; }
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<sample::ISample, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return ++references_; }
  ULONG Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  HRESULT Number(LONG* number) override {
    *number = number_;
    return S_OK;
  }

 private:
  ~Sample() { --live; }

  LONG number_;
  std::atomic<ULONG> references_{1};
};

class SampleClass final : public IClassFactory {
 public:
  constexpr SampleClass(LONG number, HRESULT outcome) : number_(number), outcome_(outcome) {}
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<IClassFactory, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return static_cast<ULONG>(++live); }
  ULONG Release() override { return static_cast<ULONG>(--live); }
  HRESULT CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override {
    if (outer) return CLASS_E_NOAGGREGATION;
    CComPtr<Sample> object;
    object.attach(new Sample(number_));
    RETURN_IF_FAILED(object->QueryInterface(riid, ppv));
    return outcome_;
  }
  HRESULT LockServer(BOOL) override { return S_OK; }

 private:
  LONG number_;
  HRESULT outcome_;
};

SampleClass first(1, S_OK);
SampleClass second(2, S_OK);
SampleClass unbound(3, E_ABORT);

SampleClass* by_name(const wchar_t* name) {
  if (!name || std::wcscmp(name, L"First") == 0) return &first;
  return std::wcscmp(name, L"Second") == 0 ? &second : nullptr;
}

SampleClass* by_identifier(REFCLSID clsid) {
  if (clsid == sample::kFirst) return &first;
  if (clsid == sample::kSecond) return &second;
  return clsid == sample::kUnbound ? &unbound : nullptr;
}

}  // namespace

extern "C" {

// FALSE, as from a component that found no type libraries.
KORLIB_API int DllMain(void*, unsigned int reason, void*) {
  sample_step(reason == DLL_PROCESS_ATTACH ? "attach" : "detach");
  return FALSE;
}

KORLIB_API HRESULT DllGetClassObject(REFCLSID clsid, REFIID riid, void** ppv) {
  SampleClass* const found = clsid == CLSID_NULL ? by_name(static_cast<const wchar_t*>(*ppv)) : by_identifier(clsid);
  return found ? found->QueryInterface(riid, ppv) : CLASS_E_CLASSNOTAVAILABLE;
}

KORLIB_API HRESULT DllCanUnloadNow() { return live == 0 ? S_OK : S_FALSE; }

KORLIB_API HRESULT DllRegisterServer() {
  sample_step("register");
  return S_OK;
}

KORLIB_API HRESULT DllUnregisterServer() {
  sample_step("unregister");
  return E_ACCESSDENIED;
}
}
