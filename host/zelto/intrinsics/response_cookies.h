// Response.Cookies.
#pragma once

#include <korlib_host/dispatch_object.h>

#include "intrinsics/page_state.h"

namespace zelto {

// One cookie to set: its default member is the value, or with a key one of the sub-keys.
class ResponseCookie final : public korlib::DispatchObject<ResponseCookie> {
 public:
  static constexpr const wchar_t* kClassName = L"ResponseCookie";
  ResponseCookie(PageStatePtr page, std::wstring name) : page_(std::move(page)), name_(std::move(name)) {}
  static std::span<const korlib::Member> members();

  HRESULT get_Item(VARIANT key, VARIANT* value);
  HRESULT put_Item(const korlib::Arguments& arguments, VARIANT* unused);
  HRESULT put_Expires(VARIANT date);
  template <std::string SetCookie::*field>
  HRESULT put_attribute(BSTR text);
  template <bool SetCookie::*field>
  HRESULT put_flag(VARIANT_BOOL is_set);
  HRESULT put_SameSite(BSTR policy);
  HRESULT get_HasKeys(VARIANT_BOOL* has_keys);

 private:
  // Runs change(cookie), which makes the cookie; refuses it when the head has gone out.
  template <class Change>
  HRESULT change(Change change);

  PageStatePtr page_;
  std::wstring name_;
};

class ResponseCookies final : public korlib::DispatchObject<ResponseCookies> {
 public:
  static constexpr const wchar_t* kClassName = L"ResponseCookies";
  explicit ResponseCookies(PageStatePtr page) : page_(std::move(page)) {}
  static std::span<const korlib::Member> members();

  HRESULT get_Item(BSTR name, IDispatch** cookie);
  HRESULT put_Item(BSTR name, VARIANT value);
  HRESULT get_Count(LONG* count);
  HRESULT get__NewEnum(IUnknown** names);

 private:
  PageStatePtr page_;
};

}  // namespace zelto
