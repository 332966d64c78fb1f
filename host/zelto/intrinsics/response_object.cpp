#include "intrinsics/response_object.h"

#include <korlib_host/own_strings.h>

#include <algorithm>
#include <cmath>
#include <ctime>

#include "base/letter_case.h"
#include "base/serial_date.h"
#include "intrinsics/arguments.h"
#include "intrinsics/response_cookies.h"
#include "intrinsics/value_text.h"
#include "script/script_object.h"
#include "text/characters.h"
#include "text/charset.h"
#include "text/http_date.h"
#include "text/http_grammar.h"
#include "text/percent_coding.h"

namespace zelto {

namespace {

constexpr std::wstring_view kSource = L"Response";
constexpr double kSecondsPerMinute = 60;

// The bytes of a VT_ARRAY | VT_UI1 of one dimension, while it lives.
bool bytes_of(const VARIANT& value, std::string_view& bytes) {
  if (value.vt != (VT_ARRAY | VT_UI1) || !value.parray || value.parray->cDims != 1) return false;
  bytes = {static_cast<const char*>(value.parray->pvData), value.parray->rgsabound[0].cElements};
  return true;
}

// A database field, say. A script's own object is not: nobody means the bytes of its default value.
bool is_host_object(const VARIANT& value) {
  return (value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN) && !script::is_script_object(value.punkVal);
}

// The value of a header field that text sets; refuses control characters.
HRESULT header_value(std::wstring_view member, BSTR text, std::string& value) {
  std::string bytes = to_utf8(korlib::view_of(text));
  if (!is_field_value(bytes)) {
    return korlib::raise(E_INVALIDARG, kSource, std::wstring(member) + L": the text may hold no control characters.");
  }
  value = std::move(bytes);
  return S_OK;
}

// The date so many minutes from now; the clock that is put forward or back until then does not change it.
double date_in(double minutes) {
  constexpr double kBeyondAllDates = 1e12;
  const double seconds = std::fmin(std::fmax(minutes * kSecondsPerMinute, -kBeyondAllDates), kBeyondAllDates);
  return base::local_date(std::time(nullptr) + std::llround(seconds));
}

// The minutes from now to a date, to the second.
double minutes_until(double date) {
  return static_cast<double>(moment_of(date) - std::time(nullptr)) / kSecondsPerMinute;
}

}  // namespace

std::span<const korlib::Member> ResponseObject::members() {
  using R = ResponseObject;
  static constexpr korlib::Member table[] = {
      method<&R::Write>(L"Write").is_default(),
      method<&R::BinaryWrite>(L"BinaryWrite"),
      method<&R::AddHeader>(L"AddHeader"),
      method<&R::AppendToLog>(L"AppendToLog"),
      method<&R::Redirect>(L"Redirect"),
      method<&R::End>(L"End"),
      method<&R::Clear>(L"Clear"),
      method<&R::Flush>(L"Flush"),
      property<&R::get_Buffer, &R::put_Buffer>(L"Buffer"),
      property<&R::get_Status, &R::put_Status>(L"Status"),
      property<&R::get_ContentType, &R::put_ContentType>(L"ContentType"),
      property<&R::get_Charset, &R::put_Charset>(L"Charset"),
      property<&R::get_CodePage, &R::put_CodePage>(L"CodePage"),
      property<&R::get_LCID, &R::put_LCID>(L"LCID"),
      property<&R::get_Cookies>(L"Cookies"),
      property<&R::get_Expires, &R::put_Expires>(L"Expires"),
      property<&R::get_ExpiresAbsolute, &R::put_ExpiresAbsolute>(L"ExpiresAbsolute"),
      property<&R::get_CacheControl, &R::put_CacheControl>(L"CacheControl"),
      property<&R::get_IsClientConnected>(L"IsClientConnected"),
  };
  return table;
}

template <class Change>
HRESULT ResponseObject::change_head(std::wstring_view member, Change change) {
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(page_->response.check_head(kSource, member));
    return change(page_->response);
  });
}

// A page whose client has gone ends with what it writes next.
HRESULT ResponseObject::go_on() { return page_->response.is_lost() ? page_->host->end_page() : S_OK; }

// The head of a page that still fills its buffer has not been sent, so it cannot have lost its client.
HRESULT ResponseObject::Write(VARIANT value) {
  return value.vt == VT_BSTR && page_->response.put(korlib_host::characters_of(value.bstrVal)) ? S_OK
                                                                                               : write_any(value);
}

// Apart, so that a character needs no more than a look at the buffer, and no registers saved for it.
[[gnu::noinline]] HRESULT ResponseObject::write_any(const VARIANT& value) {
  return guarded(kSource, [&]() -> HRESULT {
    if (value.vt == VT_BSTR) {
      page_->response.write(korlib_host::characters_of(value.bstrVal));
      return go_on();
    }
    std::wstring text;
    RETURN_IF_FAILED(append_value_text(value, page_->response.lcid, text));
    if (!text.empty()) page_->response.write(text);
    return go_on();
  });
}

HRESULT ResponseObject::write_text(std::u16string_view text) {
  return guarded(kSource, [&]() -> HRESULT {
    page_->response.write(text);
    return go_on();
  });
}

HRESULT ResponseObject::BinaryWrite(VARIANT bytes) {
  return guarded(kSource, [&]() -> HRESULT {
    CComVariant held;
    const VARIANT* value = &bytes;
    if (bytes.vt & VT_BYREF) {
      RETURN_IF_FAILED(VariantCopyInd(&held, &bytes));
      value = &held;
    }
    if (is_host_object(*value)) {
      CComVariant plain;
      bool has_none = false;
      RETURN_IF_FAILED(read_default_value(*value, &plain, &has_none));
      if (!has_none) value = &(held = std::move(plain));
    }
    std::string_view view;
    if (value->vt == VT_EMPTY || value->vt == VT_NULL) return S_OK;
    if (value->vt == VT_BSTR) {
      page_->response.write(korlib::view_of(value->bstrVal));
      return go_on();
    }
    if (!bytes_of(*value, view)) {
      return korlib::raise(DISP_E_TYPEMISMATCH, kSource, L"BinaryWrite takes an array of bytes, or text.");
    }
    page_->response.write_bytes(view);
    return go_on();
  });
}

HRESULT ResponseObject::AddHeader(BSTR name, BSTR value) {
  return change_head(L"AddHeader", [&](ResponseState& response) -> HRESULT {
    const std::string header = to_utf8(korlib::view_of(name));
    std::string text;
    if (!is_token(header)) {
      return korlib::raise(E_INVALIDARG, kSource, L"AddHeader: \"" + to_wide(header) + L"\" is not a header name.");
    }
    RETURN_IF_FAILED(header_value(L"AddHeader", value, text));
    if (is_connection_header(header)) return S_OK;
    if (base::equal_ascii(header, "Content-Type")) {
      response.content_type = text;
    } else if (base::equal_ascii(header, "Cache-Control")) {
      response.cache_control = text;
    } else {
      response.headers.push_back({header, text});
    }
    return S_OK;
  });
}

HRESULT ResponseObject::AppendToLog(BSTR text) {
  return guarded(kSource, [&] {
    page_->response.append_to_log(plain_line(to_utf8(korlib::view_of(text))));
    return S_OK;
  });
}

HRESULT ResponseObject::get_Status(BSTR* status) {
  return guarded(kSource, status, [&] {
    const ResponseState& response = page_->response;
    return give_text(to_wide(std::to_string(response.status) + " " + response.reason), status);
  });
}

HRESULT ResponseObject::put_Status(BSTR status) {
  return change_head(L"Status", [&](ResponseState& response) {
    if (response.set_status(to_utf8(korlib::view_of(status)))) return S_OK;
    return korlib::raise(E_INVALIDARG, kSource, L"Status is a number from 200 to 599 and a text, \"404 Not Found\".");
  });
}

HRESULT ResponseObject::get_CodePage(LONG* code_page) { return give(page_->response.code_page, code_page); }

HRESULT ResponseObject::put_CodePage(LONG code_page) {
  RETURN_IF_FAILED(check_code_page(kSource, code_page));
  page_->set_code_page(code_page);
  return S_OK;
}

HRESULT ResponseObject::get_LCID(LONG* lcid) { return give(page_->response.lcid, lcid); }

HRESULT ResponseObject::put_LCID(LONG lcid) {
  RETURN_IF_FAILED(check_locale(kSource, lcid));
  page_->response.lcid = lcid;
  return S_OK;
}

HRESULT ResponseObject::Redirect(BSTR url) {
  return change_head(L"Redirect", [&](ResponseState& response) -> HRESULT {
    std::string target;
    RETURN_IF_FAILED(header_value(L"Redirect", url, target));
    if (target.empty()) return korlib::raise(E_INVALIDARG, kSource, L"Redirect needs an address.");
    response.headers.push_back({"Location", escape_url(target)});
    response.clear();
    response.set_status("302 Found");
    return page_->host->end_page();
  });
}

HRESULT ResponseObject::End() { return page_->host->end_page(); }

HRESULT ResponseObject::Clear() {
  if (!page_->response.buffered) return korlib::raise(E_FAIL, kSource, L"Clear needs a buffered response.");
  page_->response.clear();
  return S_OK;
}

HRESULT ResponseObject::Flush() {
  if (!page_->response.buffered) return korlib::raise(E_FAIL, kSource, L"Flush needs a buffered response.");
  return guarded(kSource, [&] {
    page_->response.flush();
    return go_on();
  });
}

HRESULT ResponseObject::get_Buffer(VARIANT_BOOL* buffered) { return give_bool(page_->response.buffered, buffered); }

HRESULT ResponseObject::put_Buffer(VARIANT_BOOL buffered) {
  return change_head(L"Buffer", [&](ResponseState& response) {
    response.buffered = buffered != VARIANT_FALSE;
    return S_OK;
  });
}

HRESULT ResponseObject::get_ContentType(BSTR* type) { return give_text(to_wide(page_->response.content_type), type); }

HRESULT ResponseObject::put_ContentType(BSTR type) {
  return change_head(L"ContentType", [&](ResponseState& response) {
    return header_value(L"ContentType", type, response.content_type);
  });
}

HRESULT ResponseObject::get_Charset(BSTR* charset) {
  const ResponseState& response = page_->response;
  const std::string set = response.charset.empty() ? charset_of(response.code_page).value_or("") : response.charset;
  return give_text(to_wide(set), charset);
}

HRESULT ResponseObject::put_Charset(BSTR charset) {
  return change_head(L"Charset", [&](ResponseState& response) {
    const std::string name = to_utf8(korlib::view_of(charset));
    if (!name.empty() && !is_token(name)) {
      return korlib::raise(E_INVALIDARG, kSource,
                           L"Charset: \"" + to_wide(name) + L"\" is not the name of a character set.");
    }
    response.charset = name;
    return S_OK;
  });
}

HRESULT ResponseObject::get_Cookies(IDispatch** cookies) {
  return give(korlib::make<ResponseCookies>(page_).detach(), cookies);
}

HRESULT ResponseObject::get_Expires(VARIANT* minutes) {
  if (!page_->response.expires) return S_OK;
  minutes->vt = VT_R8;
  const std::optional<double>& set = page_->response.expires_minutes;
  minutes->dblVal = set ? *set : minutes_until(*page_->response.expires);
  return S_OK;
}

HRESULT ResponseObject::put_Expires(double minutes) {
  return change_head(L"Expires", [&](ResponseState& response) {
    response.expires = date_in(minutes);
    response.expires_minutes = minutes;
    return S_OK;
  });
}

HRESULT ResponseObject::get_ExpiresAbsolute(VARIANT* date) {
  if (!page_->response.expires) return S_OK;
  date->vt = VT_DATE;
  date->date = *page_->response.expires;
  return S_OK;
}

HRESULT ResponseObject::put_ExpiresAbsolute(VARIANT date) {
  return change_head(L"ExpiresAbsolute", [&](ResponseState& response) -> HRESULT {
    CComVariant converted;
    RETURN_IF_FAILED(VariantChangeType(&converted, &date, 0, VT_DATE));
    response.expires = converted.date;
    response.expires_minutes.reset();
    return S_OK;
  });
}

HRESULT ResponseObject::get_CacheControl(BSTR* value) {
  return give_text(to_wide(page_->response.cache_control), value);
}

HRESULT ResponseObject::put_CacheControl(BSTR value) {
  return change_head(L"CacheControl", [&](ResponseState& response) {
    return header_value(L"CacheControl", value, response.cache_control);
  });
}

HRESULT ResponseObject::get_IsClientConnected(VARIANT_BOOL* connected) {
  return give_bool(page_->response.connected(), connected);
}

}  // namespace zelto
