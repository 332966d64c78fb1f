// IGetContextProperties: how a component reaches the intrinsic objects of the current request.
#pragma once

#include <korlib/dispatch.h>

// GetProperty knows "Server", "Application", "Request", "Response" and, where the page has one,
// "Session"; each value is VT_DISPATCH. An unknown name is E_INVALIDARG and leaves *value VT_EMPTY.
struct IGetContextProperties : IUnknown {
  virtual HRESULT Count(LONG* count) = 0;
  virtual HRESULT GetProperty(BSTR name, VARIANT* value) = 0;
  virtual HRESULT EnumNames(IUnknown** names) = 0;

 protected:
  ~IGetContextProperties() = default;
};
KORLIB_IID(IGetContextProperties, "51372AF4-CAE7-11CF-BE81-00AA00A2FA25");

inline constexpr const GUID& IID_IGetContextProperties = korlib::iid_of<IGetContextProperties>;
