#include "intrinsics/server_object.h"

#include <korlib/activation.h>
#include <korlib_host/class_table.h>

#include "base/near_names.h"
#include "intrinsics/value_text.h"
#include "script/watchdog.h"
#include "text/charset.h"
#include "text/html.h"
#include "text/path_segments.h"
#include "text/percent_coding.h"

namespace zelto {

namespace {

constexpr std::wstring_view kSource = L"Server";

std::wstring quoted(std::wstring_view text) { return L"\"" + std::wstring(text) + L"\""; }

std::wstring no_class(std::wstring_view name) {
  const std::wstring near = base::did_you_mean(korlib_host::prog_ids(), name);
  return L"CreateObject: no class is registered as " + quoted(name) + (near.empty() ? L"." : L"; " + near);
}

// Keeps the error object that the failing call has set; without one, sets one with this text.
HRESULT raise_unless_said(HRESULT hr, std::wstring_view text) {
  CComPtr<IErrorInfo> said;
  if (GetErrorInfo(0, said.put()) == S_OK && said) {
    SetErrorInfo(0, said.get());
    return hr;
  }
  return korlib::raise(hr, kSource, text);
}

}  // namespace

std::span<const korlib::Member> ServerObject::members() {
  using S = ServerObject;
  static constexpr korlib::Member table[] = {
      method<&S::CreateObject>(L"CreateObject"),
      method<&S::with_text<&S::MapPath>>(L"MapPath"),
      method<&S::with_text<&S::HTMLEncode>>(L"HTMLEncode"),
      method<&S::with_text<&S::URLEncode>>(L"URLEncode"),
      method<&S::Execute>(L"Execute"),
      method<&S::Transfer>(L"Transfer"),
      method<&S::GetLastError>(L"GetLastError"),
      property<&S::get_ScriptTimeout, &S::put_ScriptTimeout>(L"ScriptTimeout"),
  };
  return table;
}

template <HRESULT (ServerObject::*typed)(BSTR, BSTR*)>
HRESULT ServerObject::with_text(VARIANT value, BSTR* out) {
  if (value.vt == VT_BSTR) return (this->*typed)(value.bstrVal, out);
  std::wstring text;
  RETURN_IF_FAILED(append_value_text(value, page_->response.lcid, text));
  const CComVariant whole{std::wstring_view(text)};
  return (this->*typed)(whole.bstrVal, out);
}

HRESULT ServerObject::HTMLEncode(BSTR text, BSTR* encoded) {
  return guarded(kSource, encoded, [&] {
    *encoded = html_encoded(korlib::view_of(text), page_->response.code_page);
    return *encoded ? S_OK : E_OUTOFMEMORY;
  });
}

HRESULT ServerObject::URLEncode(BSTR text, BSTR* encoded) {
  return guarded(kSource, encoded, [&] {
    return give_text(to_wide(form_encode(encode(page_->response.code_page, korlib::view_of(text)))), encoded);
  });
}

HRESULT ServerObject::resolve(std::wstring_view member, BSTR path, std::string& virtual_path) const {
  const auto resolved = resolve_virtual_path(to_utf8(korlib::view_of(path)), page_->request.place().virtual_path);
  if (!resolved) {
    return korlib::raise(E_INVALIDARG, kSource,
                         std::wstring(member) + L": " + quoted(korlib::view_of(path)) + L" lies outside the site.");
  }
  virtual_path = *resolved;
  return S_OK;
}

HRESULT ServerObject::MapPath(BSTR path, BSTR* physical) {
  return guarded(kSource, physical, [&]() -> HRESULT {
    std::string resolved;
    RETURN_IF_FAILED(resolve(L"MapPath", path, resolved));
    if (resolved.ends_with('/')) resolved.pop_back();
    return give_text(to_wide(page_->request.place().site_root + resolved), physical);
  });
}

HRESULT ServerObject::CreateObject(BSTR prog_id, IDispatch** object) {
  return guarded(kSource, object, [&]() -> HRESULT {
    RETURN_IF_FAILED(script::check_stack());
    SetErrorInfo(0, nullptr);
    const std::wstring_view name = korlib::view_of(prog_id);
    CLSID clsid{};
    HRESULT hr = CLSIDFromProgID(CComBSTR(name), &clsid);
    if (FAILED(hr)) hr = CLSIDFromString(CComBSTR(name), &clsid);
    if (FAILED(hr)) return raise_unless_said(hr, no_class(name));
    CComPtr<IDispatch> made;
    hr = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER, IID_IDispatch, made.put_void());
    if (FAILED(hr)) return raise_unless_said(hr, L"CreateObject: an object of " + quoted(name) + L" cannot be made.");
    *object = made.detach();
    return S_OK;
  });
}

HRESULT ServerObject::Execute(BSTR path) {
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(script::check_stack());
    std::string resolved;
    RETURN_IF_FAILED(resolve(L"Execute", path, resolved));
    return page_->host->execute(resolved);
  });
}

HRESULT ServerObject::Transfer(BSTR path) {
  return guarded(kSource, [&]() -> HRESULT {
    if (page_->has_ended()) return E_UNEXPECTED;
    if (!page_->response.head_sent()) page_->response.clear();
    RETURN_IF_FAILED(Execute(path));
    return page_->host->end_page();
  });
}

HRESULT ServerObject::GetLastError(IDispatch** error) {
  const PageError* last = page_->host->last_error();
  return give(korlib::make<AspErrorObject>(last ? *last : PageError()).detach(), error);
}

HRESULT ServerObject::get_ScriptTimeout(LONG* seconds) { return give(page_->host->script_timeout(), seconds); }

HRESULT ServerObject::put_ScriptTimeout(LONG seconds) {
  if (seconds < 1) return korlib::raise(E_INVALIDARG, kSource, L"ScriptTimeout is a number of seconds from 1.");
  return page_->host->set_script_timeout(seconds);
}

std::span<const korlib::Member> AspErrorObject::members() {
  using E = AspErrorObject;
  static constexpr korlib::Member table[] = {
      property<&E::get_ASPCode>(L"ASPCode"),
      property<&E::get_number<&PageError::number>>(L"Number"),
      property<&E::get_text<&PageError::code_line>>(L"Source"),
      property<&E::get_text<&PageError::category>>(L"Category"),
      property<&E::get_text<&PageError::file>>(L"File"),
      property<&E::get_number<&PageError::line>>(L"Line"),
      property<&E::get_number<&PageError::column>>(L"Column"),
      property<&E::get_text<&PageError::description>>(L"Description"),
      property<&E::get_text<&PageError::source>>(L"ASPDescription"),
  };
  return table;
}

}  // namespace zelto
