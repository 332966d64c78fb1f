// Objects that live on a test's stack: they are not counted.
#pragma once

#include <korlib/dispatch.h>
#include <korlib/ptr.h>

namespace test {

// Answers to its own interface only. `Base` implements members of it.
template <class Interface, class Base = Interface>
class Still : public Base {
 public:
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<Interface, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return 2; }
  ULONG Release() override { return 1; }

 protected:
  Still() = default;
  ~Still() = default;
};

// Without any name that late binding could find.
template <class Interface = IDispatch>
class StillDispatch : public Still<Interface> {
 public:
  HRESULT GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return DISP_E_UNKNOWNNAME; }
  HRESULT Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return DISP_E_MEMBERNOTFOUND;
  }
};

}  // namespace test
