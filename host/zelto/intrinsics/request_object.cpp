#include "intrinsics/request_object.h"

#include <korlib_host/byte_array.h>

#include <algorithm>
#include <limits>

namespace zelto {

namespace {

using ZeltoTypeLibrary::IRequestDictionary;
using Fields = RequestState::Fields;

constexpr std::wstring_view kSource = L"Request";

// The variable that a byte count is read from and goes back to.
VARIANT* counted_variable(VARIANT* count) {
  return count->vt == (VT_BYREF | VT_VARIANT) && count->pvarVal ? count->pvarVal : count;
}

void put_count(VARIANT* count, LONG value) {
  if (count->vt == (VT_BYREF | VT_I4) && count->plVal) {
    *count->plVal = value;
    return;
  }
  VariantClear(count);
  count->vt = VT_I4;
  count->lVal = value;
}

}  // namespace

std::span<const korlib::Member> RequestObject::members() {
  static constexpr korlib::Member table[] = {
      property<&RequestObject::find>(L"Item").is_default(),
      property<&RequestObject::get_QueryString>(L"QueryString"),
      property<&RequestObject::get_Form>(L"Form"),
      property<&RequestObject::get_Cookies>(L"Cookies"),
      property<&RequestObject::get_ServerVariables>(L"ServerVariables"),
      property<&RequestObject::get_ClientCertificate>(L"ClientCertificate"),
      property<&RequestObject::get_TotalBytes>(L"TotalBytes"),
      method<&RequestObject::read_bytes>(L"BinaryRead"),
  };
  return table;
}

// In the documented order. The body is looked at only when it can hold fields and was not read as bytes.
HRESULT RequestObject::search(std::wstring_view name, CComPtr<IDispatch>& value) {
  RequestState& request = page_->request;
  const auto take = [&](const Fields& fields) {
    const Field* field = fields->find(name);
    if (field) value = korlib::make<StringList>(std::shared_ptr<const Field>(fields, field)).get();
    return field != nullptr;
  };
  Fields fields;
  RETURN_IF_FAILED(request.query(fields));
  if (take(fields)) return S_OK;
  if (request.has_urlencoded_body() && !request.was_read_as_bytes()) {
    RETURN_IF_FAILED(request.form(fields));
    if (take(fields)) return S_OK;
  }
  if (const ReceivedCookie* cookie = request.cookies().find(name)) {
    value.attach(static_cast<IRequestDictionary*>(korlib::make<CookieValue>(page_, cookie).detach()));
    return S_OK;
  }
  if (auto variable = request.server_variable(name)) value = korlib::make<StringList>(std::move(variable)).get();
  return S_OK;
}

HRESULT RequestObject::get_Item(BSTR name, IDispatch** value) {
  return guarded(kSource, value, [&]() -> HRESULT {
    CComPtr<IDispatch> found;
    RETURN_IF_FAILED(search(korlib::view_of(name), found));
    if (!found) found = korlib::make<StringList>(nullptr).get();
    return give(found.detach(), value);
  });
}

HRESULT RequestObject::find(VARIANT name, VARIANT* value) {
  CComVariant text;
  RETURN_IF_FAILED(VariantChangeType(&text, &name, 0, VT_BSTR));
  CComPtr<IDispatch> found;
  RETURN_IF_FAILED(search(korlib::view_of(text.bstrVal), found));
  if (found) {
    value->vt = VT_DISPATCH;
    value->pdispVal = found.detach();
  }
  return S_OK;
}

HRESULT RequestObject::give_fields(FieldCollection::Source source, IRequestDictionary** values) {
  return guarded(kSource, values, [&] { return give(korlib::make<FieldCollection>(page_, source).detach(), values); });
}

HRESULT RequestObject::get_QueryString(IRequestDictionary** values) {
  return give_fields(&RequestState::query, values);
}

HRESULT RequestObject::get_Form(IRequestDictionary** values) { return give_fields(&RequestState::form, values); }

HRESULT RequestObject::get_ServerVariables(IRequestDictionary** values) {
  return give_fields(&RequestState::server_variables, values);
}

HRESULT RequestObject::get_ClientCertificate(IRequestDictionary** values) {
  return give_fields(&RequestState::client_certificate, values);
}

HRESULT RequestObject::get_Cookies(IRequestDictionary** values) {
  return guarded(kSource, values, [&] { return give(korlib::make<CookieCollection>(page_).detach(), values); });
}

HRESULT RequestObject::get_TotalBytes(LONG* bytes) {
  constexpr std::uint64_t kMost = std::numeric_limits<LONG>::max();
  return give(static_cast<LONG>(std::min(page_->request.total_bytes(), kMost)), bytes);
}

HRESULT RequestObject::BinaryRead(VARIANT* count, VARIANT* data) {
  if (!count || !data) return E_POINTER;
  const bool is_spent = page_->request.is_spent();
  RETURN_IF_FAILED(read_bytes(count, data));
  if (!is_spent) return S_OK;
  RETURN_IF_FAILED(VariantClear(data));
  data->vt = VT_NULL;
  return S_OK;
}

HRESULT RequestObject::read_bytes(VARIANT* count, VARIANT* data) {
  if (!count) return E_POINTER;
  return guarded(kSource, data, [&]() -> HRESULT {
    VARIANT* variable = counted_variable(count);
    CComVariant wanted;
    RETURN_IF_FAILED(VariantChangeType(&wanted, variable, 0, VT_I4));
    if (wanted.lVal < 0) return korlib::raise(E_INVALIDARG, kSource, L"BinaryRead: the count is negative.");
    if (page_->request.http().body_too_large) put_count(variable, 0);
    // Made first: what has been read is gone from the request. The array takes the memory of the bytes over, so that
    // the body of a large upload exists once.
    CComSafeArray array(VT_UI1, 0);
    if (!array) return E_OUTOFMEMORY;
    Body bytes;
    RETURN_IF_FAILED(page_->request.read_bytes(static_cast<std::size_t>(wanted.lVal), bytes));
    const std::size_t read = bytes.size();
    korlib_host::adopt_bytes(*array.get(), bytes.release().release(), read);
    array.detach_to(data);
    put_count(variable, static_cast<LONG>(read));
    return S_OK;
  });
}

}  // namespace zelto
