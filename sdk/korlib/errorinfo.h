// The error object of a thread: what failed, in words. The host supplies the functions.
//
// A member that fails with something to say makes an error object, sets it for its thread and answers the code.
// A caller that reports the failure takes the object away; one that goes on after the failure clears it, or a
// later failure without a text would show the old one.
#pragma once

#include <korlib/dispatch.h>

// The words of one failure. Strings are new ones, the caller's to free; what was not set is null or zero.
struct IErrorInfo : IUnknown {
  // The interface that failed, GUID_NULL where it was not set.
  virtual HRESULT GetGUID(GUID* guid) = 0;
  // Who failed: a ProgID as a rule, "Mirt".
  virtual HRESULT GetSource(BSTR* source) = 0;
  // What is to be shown to a person.
  virtual HRESULT GetDescription(BSTR* description) = 0;
  // Where more is written: see mirt/template_places.h.
  virtual HRESULT GetHelpFile(BSTR* file) = 0;
  virtual HRESULT GetHelpContext(DWORD* context) = 0;

 protected:
  ~IErrorInfo() = default;
};
KORLIB_IID(IErrorInfo, "1CF2B120-547D-101B-8E65-08002B2BD119");

// An error object that is being made. It answers to IErrorInfo as well, which is what SetErrorInfo takes. Text
// is copied; it is not written to, though its type would allow that.
struct ICreateErrorInfo : IUnknown {
  // The interface that failed.
  virtual HRESULT SetGUID(REFGUID guid) = 0;
  // Who failed: a ProgID as a rule. Null takes the text away, here and below. E_OUTOFMEMORY leaves the old one.
  virtual HRESULT SetSource(LPOLESTR source) = 0;
  // What is to be shown to a person.
  virtual HRESULT SetDescription(LPOLESTR description) = 0;
  // Where more is written: the path of a help file, and a page's number in it, or what the number says.
  virtual HRESULT SetHelpFile(LPOLESTR file) = 0;
  virtual HRESULT SetHelpContext(DWORD context) = 0;

 protected:
  ~ICreateErrorInfo() = default;
};
KORLIB_IID(ICreateErrorInfo, "22F03340-547D-101B-8E65-08002B2BD119");

// The identifier under its usual name.
inline constexpr const GUID& IID_IErrorInfo = korlib::iid_of<IErrorInfo>;

extern "C" {
// A new error object without words; the caller's. On failure *info is null.
KORLIB_API HRESULT CreateErrorInfo(ICreateErrorInfo** info);
// Replaces the calling thread's error object, which is counted; null clears it. `reserved` is 0.
KORLIB_API HRESULT SetErrorInfo(ULONG reserved, IErrorInfo* info);
// Moves the calling thread's error object out: the caller owns it and the thread has none any more. S_FALSE and
// null when there is none. `reserved` is 0.
KORLIB_API HRESULT GetErrorInfo(ULONG reserved, IErrorInfo** info);
}
