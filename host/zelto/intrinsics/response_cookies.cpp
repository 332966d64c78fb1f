#include "intrinsics/response_cookies.h"

#include <algorithm>

#include "base/letter_case.h"
#include "intrinsics/arguments.h"
#include "text/characters.h"
#include "text/charset.h"

namespace zelto {

namespace {

constexpr std::wstring_view kSource = L"Response.Cookies";

HRESULT text_of(const VARIANT& value, std::wstring& text) {
  CComVariant converted;
  RETURN_IF_FAILED(VariantChangeType(&converted, &value, 0, VT_BSTR));
  text = korlib::view_of(converted.bstrVal);
  return S_OK;
}

}  // namespace

std::span<const korlib::Member> ResponseCookie::members() {
  static constexpr korlib::Member table[] = {
      property<&ResponseCookie::get_Item, &ResponseCookie::put_Item>(L"_Default").is_default().optional(0),
      property<&ResponseCookie::get_Item, &ResponseCookie::put_Item>(L"Item"),
      property<nullptr, &ResponseCookie::put_Expires>(L"Expires"),
      property<nullptr, &ResponseCookie::put_attribute<&SetCookie::domain>>(L"Domain"),
      property<nullptr, &ResponseCookie::put_attribute<&SetCookie::path>>(L"Path"),
      property<nullptr, &ResponseCookie::put_flag<&SetCookie::secure>>(L"Secure"),
      property<nullptr, &ResponseCookie::put_flag<&SetCookie::http_only>>(L"HttpOnly"),
      property<nullptr, &ResponseCookie::put_SameSite>(L"SameSite"),
      property<&ResponseCookie::get_HasKeys>(L"HasKeys"),
  };
  return table;
}

template <class Change>
HRESULT ResponseCookie::change(Change change) {
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(page_->response.check_head(kSource));
    const SetCookie* const known = find_named(page_->response.cookies, name_);
    SetCookie changed = known ? *known : SetCookie();
    if (!known) changed.name = name_;
    const HRESULT hr = change(changed);
    // What is refused leaves a cookie that has been named, without it.
    if (hr != E_OUTOFMEMORY) page_->response.set_cookie(std::move(changed));
    return hr;
  });
}

HRESULT ResponseCookie::get_Item(VARIANT key, VARIANT* value) {
  std::wstring name;
  if (key.vt != VT_ERROR) RETURN_IF_FAILED(text_of(key, name));
  const SetCookie* cookie = find_named(page_->response.cookies, name_);  // looking at one sets none
  if (!cookie) return give_text(L"", value);
  if (key.vt == VT_ERROR) return give_text(cookie->value, value);
  const CookieKey* row = find_named(cookie->keys, name);
  return give_text(row ? row->value : std::wstring(), value);
}

HRESULT ResponseCookie::put_Item(const korlib::Arguments& arguments, VARIANT*) {
  if (arguments.count() < 1 || arguments.count() > 2) return DISP_E_BADPARAMCOUNT;
  std::wstring value;
  RETURN_IF_FAILED(text_of(arguments[arguments.count() - 1], value));
  return change([&](SetCookie& cookie) -> HRESULT {
    if (arguments.count() == 1) {
      cookie.value = value;
      cookie.keys.clear();
      return S_OK;
    }
    std::wstring key;
    RETURN_IF_FAILED(text_of(arguments[0], key));
    if (CookieKey* row = find_named(cookie.keys, key)) {
      row->value = value;
    } else {
      cookie.keys.push_back({key, value});
    }
    return S_OK;
  });
}

HRESULT ResponseCookie::put_Expires(VARIANT date) {
  CComVariant converted;
  RETURN_IF_FAILED(VariantChangeType(&converted, &date, 0, VT_DATE));
  return change([&](SetCookie& cookie) {
    cookie.expires = converted.date;
    return S_OK;
  });
}

template <std::string SetCookie::*field>
HRESULT ResponseCookie::put_attribute(BSTR text) {
  return change([&](SetCookie& cookie) -> HRESULT {
    std::string bytes = to_utf8(korlib::view_of(text));
    if (std::ranges::any_of(bytes, [](char c) { return c == ';' || is_control(c); })) {
      return korlib::raise(E_INVALIDARG, kSource, L"A cookie's attribute may hold neither ';' nor control characters.");
    }
    cookie.*field = std::move(bytes);
    return S_OK;
  });
}

template <bool SetCookie::*field>
HRESULT ResponseCookie::put_flag(VARIANT_BOOL is_set) {
  return change([&](SetCookie& cookie) { return give(is_set != VARIANT_FALSE, &(cookie.*field)); });
}

HRESULT ResponseCookie::put_SameSite(BSTR policy) {
  const std::string wanted = to_utf8(korlib::view_of(policy));
  return change([&](SetCookie& cookie) {
    for (const char* known : {"", "Lax", "Strict", "None"}) {
      if (base::equal_ascii(known, wanted)) {
        cookie.same_site = known;
        return S_OK;
      }
    }
    return korlib::raise(E_INVALIDARG, kSource, L"SameSite is Lax, Strict, None or empty.");
  });
}

HRESULT ResponseCookie::get_HasKeys(VARIANT_BOOL* has_keys) {
  const SetCookie* cookie = find_named(page_->response.cookies, name_);
  return give_bool(cookie && !cookie->keys.empty(), has_keys);
}

std::span<const korlib::Member> ResponseCookies::members() {
  static constexpr korlib::Member table[] = {
      property<&ResponseCookies::get_Item, &ResponseCookies::put_Item>(L"Item").is_default(),
      property<&ResponseCookies::get_Count>(L"Count"),
      new_enum<&ResponseCookies::get__NewEnum>(),
  };
  return table;
}

HRESULT ResponseCookies::get_Item(BSTR name, IDispatch** cookie) {
  *cookie = nullptr;
  const std::wstring_view text = korlib::view_of(name);
  if (text.empty()) return korlib::raise(E_INVALIDARG, kSource, L"A cookie needs a name.");
  return give(korlib::make<ResponseCookie>(page_, std::wstring(text)).detach(), cookie);
}

HRESULT ResponseCookies::put_Item(BSTR name, VARIANT value) {
  CComPtr<IDispatch> cookie;
  RETURN_IF_FAILED(get_Item(name, cookie.put()));
  DISPID put = DISPID_PROPERTYPUT;
  DISPPARAMS params{&value, &put, 1, 1};
  return cookie->Invoke(DISPID_VALUE, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_PROPERTYPUT, &params, nullptr, nullptr,
                        nullptr);
}

HRESULT ResponseCookies::get_Count(LONG* count) {
  return give(static_cast<LONG>(page_->response.cookies.size()), count);
}

HRESULT ResponseCookies::get__NewEnum(IUnknown** names) {
  return give_texts(page_->response.cookies, names, &SetCookie::name);
}

}  // namespace zelto
