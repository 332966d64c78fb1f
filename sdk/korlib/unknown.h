// IUnknown, the root of every interface, and IClassFactory.
#pragma once

#include <korlib/guid.h>
#include <korlib/hresult.h>
#include <korlib/types.h>

// Reference counting and interface discovery.
//
// QueryInterface hands out a counted reference; on failure it sets *ppv to null and answers
// E_NOINTERFACE. AddRef and Release return the new count, for diagnostics only. The one caller that
// reads *ppv before it is written is the component's private session interface, asked for with
// IID_NULL: whoever does that clears the slot first.
struct IUnknown {
  virtual HRESULT QueryInterface(REFIID riid, void** ppv) = 0;
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;

 protected:
  ~IUnknown() = default;
};
KORLIB_IID(IUnknown, "00000000-0000-0000-C000-000000000046");

// Makes objects of one class. LockServer keeps the module in memory.
struct IClassFactory : IUnknown {
  virtual HRESULT CreateInstance(IUnknown* outer, REFIID riid, void** ppv) = 0;
  virtual HRESULT LockServer(BOOL lock) = 0;

 protected:
  ~IClassFactory() = default;
};
KORLIB_IID(IClassFactory, "00000001-0000-0000-C000-000000000046");

inline constexpr const GUID& IID_IUnknown = korlib::iid_of<IUnknown>;
inline constexpr const GUID& IID_IClassFactory = korlib::iid_of<IClassFactory>;
