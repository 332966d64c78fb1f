// IUnknown, the root of every interface, and IClassFactory.
#pragma once

#include <korlib/guid.h>
#include <korlib/hresult.h>
#include <korlib/types.h>

// Reference counting and interface discovery.
//
// Whoever keeps an interface pointer holds one reference and gives it back with Release; the object goes with
// the last. An argument is the caller's for the time of the call: a callee that keeps it counts it. A result is
// counted by the callee, and the caller's to release.
//
// The objects of a host count atomically and may be released on any thread. Those of the component count
// plainly: they belong to the thread that uses them.
struct IUnknown {
  // Hands out a counted reference to another interface of the same object; on failure it sets *ppv to null and
  // answers E_NOINTERFACE. IID_IUnknown always gives the same address, by which two references can be compared.
  //
  // The one caller that reads *ppv before it is written is the component's private session interface, asked for
  // with IID_NULL: whoever does that clears the slot first.
  virtual HRESULT QueryInterface(REFIID riid, void** ppv) = 0;
  // Both answer the new count, for diagnostics only.
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;

 protected:
  ~IUnknown() = default;
};
KORLIB_IID(IUnknown, "00000000-0000-0000-C000-000000000046");

// Makes objects of one class. It is itself an object: module (activation.h) and class object live as long as
// one of them is referenced.
struct IClassFactory : IUnknown {
  // A new object, asked for `riid`, with one reference: the caller's. `outer` is null, or
  // CLASS_E_NOAGGREGATION. A class whose objects belong to a request may fail and leave the object in *ppv all
  // the same, for the caller to release.
  virtual HRESULT CreateInstance(IUnknown* outer, REFIID riid, void** ppv) = 0;
  // Keeps the module in memory where a host counts that. Always a success.
  virtual HRESULT LockServer(BOOL lock) = 0;

 protected:
  ~IClassFactory() = default;
};
KORLIB_IID(IClassFactory, "00000001-0000-0000-C000-000000000046");

// The identifiers under their usual names.
inline constexpr const GUID& IID_IUnknown = korlib::iid_of<IUnknown>;
inline constexpr const GUID& IID_IClassFactory = korlib::iid_of<IClassFactory>;
