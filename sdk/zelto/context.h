// IGetContextProperties: how a component reaches the intrinsic objects of the current request.
#pragma once

#include <korlib/dispatch.h>

// The context of a request: what CoGetObjectContext gives on the thread that runs it, and what a component is
// bound to when it is made. It belongs to the request and to that thread. A component keeps the objects that it
// takes from it, not the context.
struct IGetContextProperties : IUnknown {
  // How many names there are.
  virtual HRESULT Count(LONG* count) = 0;
  // The object of a name: "Server", "Application", "Request", "Response" and, where the page has one,
  // "Session". *value is a VT_DISPATCH with a reference of its own, to be cleared by the caller. An unknown
  // name, in another letter case say, is E_INVALIDARG and leaves *value VT_EMPTY.
  virtual HRESULT GetProperty(BSTR name, VARIANT* value) = 0;
  // The names, as an IEnumVARIANT.
  virtual HRESULT EnumNames(IUnknown** names) = 0;

 protected:
  ~IGetContextProperties() = default;
};
KORLIB_IID(IGetContextProperties, "51372AF4-CAE7-11CF-BE81-00AA00A2FA25");

// The identifier under its usual name.
inline constexpr const GUID& IID_IGetContextProperties = korlib::iid_of<IGetContextProperties>;
