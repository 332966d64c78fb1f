// IDispatch: late-bound calls by name. ITypeInfo and ITypeLib: what an object's names mean.
#pragma once

#include <korlib/unknown.h>
#include <korlib/variant.h>

// Arguments arrive in reverse order: rgvarg[cArgs - 1] is the first. A property put carries its value
// as rgvarg[0], named DISPID_PROPERTYPUT.
struct DISPPARAMS {
  VARIANT* rgvarg;
  DISPID* rgdispidNamedArgs;
  UINT cArgs;
  UINT cNamedArgs;
};

// Filled with DISP_E_EXCEPTION only; the receiver frees the strings.
struct EXCEPINFO {
  WORD wCode;
  WORD wReserved;
  BSTR bstrSource;
  BSTR bstrDescription;
  BSTR bstrHelpFile;
  DWORD dwHelpContext;
  void* pvReserved;
  HRESULT (*pfnDeferredFillIn)(EXCEPINFO*);
  SCODE scode;
};

inline constexpr WORD DISPATCH_METHOD = 1;
inline constexpr WORD DISPATCH_PROPERTYGET = 2;
inline constexpr WORD DISPATCH_PROPERTYPUT = 4;
inline constexpr WORD DISPATCH_PROPERTYPUTREF = 8;

inline constexpr DISPID DISPID_VALUE = 0;
inline constexpr DISPID DISPID_UNKNOWN = -1;
inline constexpr DISPID DISPID_PROPERTYPUT = -3;
inline constexpr DISPID DISPID_NEWENUM = -4;

inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 2048;

struct ITypeInfo;

struct IDispatch : IUnknown {
  virtual HRESULT GetTypeInfoCount(UINT* count) = 0;
  virtual HRESULT GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info) = 0;
  // names[0] is the member; further names are its arguments. Unknown: DISP_E_UNKNOWNNAME.
  virtual HRESULT GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid, DISPID* ids) = 0;
  // `result`, `excepinfo` and `argerr` may be null. *result need not be initialised by the caller and
  // is owned by it afterwards.
  virtual HRESULT Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params, VARIANT* result,
                         EXCEPINFO* excepinfo, UINT* argerr) = 0;

 protected:
  ~IDispatch() = default;
};
KORLIB_IID(IDispatch, "00020400-0000-0000-C000-000000000046");

// Steps through the values of a collection. Next answers S_FALSE when fewer than `count` were left.
struct IEnumVARIANT : IUnknown {
  virtual HRESULT Next(ULONG count, VARIANT* values, ULONG* fetched) = 0;
  virtual HRESULT Skip(ULONG count) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumVARIANT** copy) = 0;

 protected:
  ~IEnumVARIANT() = default;
};
KORLIB_IID(IEnumVARIANT, "00020404-0000-0000-C000-000000000046");

inline constexpr const GUID& IID_IDispatch = korlib::iid_of<IDispatch>;
