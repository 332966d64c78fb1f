// The error object of a thread: what failed, in words. The host supplies the functions.
#pragma once

#include <korlib/dispatch.h>

struct IErrorInfo : IUnknown {
  virtual HRESULT GetGUID(GUID* guid) = 0;
  virtual HRESULT GetSource(BSTR* source) = 0;
  virtual HRESULT GetDescription(BSTR* description) = 0;
  virtual HRESULT GetHelpFile(BSTR* file) = 0;
  virtual HRESULT GetHelpContext(DWORD* context) = 0;

 protected:
  ~IErrorInfo() = default;
};
KORLIB_IID(IErrorInfo, "1CF2B120-547D-101B-8E65-08002B2BD119");

struct ICreateErrorInfo : IUnknown {
  virtual HRESULT SetGUID(REFGUID guid) = 0;
  virtual HRESULT SetSource(LPOLESTR source) = 0;
  virtual HRESULT SetDescription(LPOLESTR description) = 0;
  virtual HRESULT SetHelpFile(LPOLESTR file) = 0;
  virtual HRESULT SetHelpContext(DWORD context) = 0;

 protected:
  ~ICreateErrorInfo() = default;
};
KORLIB_IID(ICreateErrorInfo, "22F03340-547D-101B-8E65-08002B2BD119");

inline constexpr const GUID& IID_IErrorInfo = korlib::iid_of<IErrorInfo>;

extern "C" {
KORLIB_API HRESULT CreateErrorInfo(ICreateErrorInfo** info);
// Replaces the calling thread's error object; null clears it. `reserved` is 0.
KORLIB_API HRESULT SetErrorInfo(ULONG reserved, IErrorInfo* info);
// Moves the calling thread's error object out; S_FALSE and null when there is none.
KORLIB_API HRESULT GetErrorInfo(ULONG reserved, IErrorInfo** info);
}
