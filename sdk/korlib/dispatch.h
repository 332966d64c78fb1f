// IDispatch: late-bound calls by name, which is how scripts and objects call each other.
#pragma once

#include <korlib/unknown.h>
#include <korlib/variant.h>

// The arguments of one call, which stay the caller's. They arrive in reverse order: rgvarg[cArgs - 1] is the
// first.
//
// A property put carries its value as rgvarg[0], named DISPID_PROPERTYPUT. Other named arguments are not used
// in this system.
struct DISPPARAMS {
  // cArgs values; null when there are none. One of type VT_BYREF may be written to by the callee.
  VARIANT* rgvarg;
  // The names of the first cNamedArgs of them.
  DISPID* rgdispidNamedArgs;
  UINT cArgs;
  UINT cNamedArgs;
};

// A failure in words, filled with DISP_E_EXCEPTION only; the receiver frees the strings. Components of this
// system leave it alone and use the thread's error object (errorinfo.h) instead.
struct EXCEPINFO {
  WORD wCode;
  WORD wReserved;
  // Who failed, and what is to be said. Each may be null.
  BSTR bstrSource;
  BSTR bstrDescription;
  BSTR bstrHelpFile;
  DWORD dwHelpContext;
  // When not null, to be called once before the rest is read.
  void* pvReserved;
  HRESULT (*pfnDeferredFillIn)(EXCEPINFO*);
  // The code of the failure; 0 when wCode has it.
  SCODE scode;
};

// The kinds of call, as bits. A caller that cannot tell a method from a property read sets both.
inline constexpr WORD DISPATCH_METHOD = 1;
inline constexpr WORD DISPATCH_PROPERTYGET = 2;
inline constexpr WORD DISPATCH_PROPERTYPUT = 4;
inline constexpr WORD DISPATCH_PROPERTYPUTREF = 8;

// Identifiers with a meaning of their own: the default member, no member, the value of a property put, and the
// enumerator of a collection.
inline constexpr DISPID DISPID_VALUE = 0;
inline constexpr DISPID DISPID_UNKNOWN = -1;
inline constexpr DISPID DISPID_PROPERTYPUT = -3;
inline constexpr DISPID DISPID_NEWENUM = -4;

// The locale to pass where none is meant.
inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 2048;

struct ITypeInfo;

// An object whose members are found by name while the program runs.
struct IDispatch : IUnknown {
  // 1 when the object has type information, else 0; and that, counted (typeinfo.h). Index and locale are not
  // looked at.
  virtual HRESULT GetTypeInfoCount(UINT* count) = 0;
  virtual HRESULT GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info) = 0;
  // The identifier of a member, good as long as the object lives. names[0] is the member, in any letter case;
  // further names are its arguments, which get no identifier here. An unknown name is DISP_E_UNKNOWNNAME and
  // DISPID_UNKNOWN in its place. `riid` is IID_NULL.
  virtual HRESULT GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid, DISPID* ids) = 0;
  // Calls the member, or reads or writes it, as `flags` says. `riid` is IID_NULL, the locale is not looked at.
  //
  // `result`, `excepinfo` and `argerr` may be null. *result need not be initialised by the caller, is VT_EMPTY
  // after a failure and is owned by the caller afterwards. *argerr receives the place in rgvarg of the argument
  // that did not convert (DISP_E_TYPEMISMATCH). A member's own failure is answered as it is, with its words in
  // the thread's error object.
  virtual HRESULT Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params, VARIANT* result,
                         EXCEPINFO* excepinfo, UINT* argerr) = 0;

 protected:
  ~IDispatch() = default;
};
KORLIB_IID(IDispatch, "00020400-0000-0000-C000-000000000046");

// Steps through the values of a collection; what a collection's _NewEnum gives. Whether it sees what changes in the
// collection meanwhile is up to the collection.
struct IEnumVARIANT : IUnknown {
  // Up to `count` values into `values`, whose old bits are not looked at; they are the caller's to clear.
  // S_FALSE when fewer were left. *fetched, which may be null when `count` is 1, is how many there are.
  virtual HRESULT Next(ULONG count, VARIANT* values, ULONG* fetched) = 0;
  // Goes over values; S_FALSE when fewer were left.
  virtual HRESULT Skip(ULONG count) = 0;
  // Back to the first value.
  virtual HRESULT Reset() = 0;
  // Another enumerator at the same place.
  virtual HRESULT Clone(IEnumVARIANT** copy) = 0;

 protected:
  ~IEnumVARIANT() = default;
};
KORLIB_IID(IEnumVARIANT, "00020404-0000-0000-C000-000000000046");

inline constexpr const GUID& IID_IDispatch = korlib::iid_of<IDispatch>;
