#include "support/fake_request.h"

#include <algorithm>
#include <cwctype>

#include <korlib_host/errors.h>

namespace fake {
namespace {

bool same_name(std::wstring_view a, std::wstring_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](wchar_t x, wchar_t y) {
    return std::towlower(static_cast<std::wint_t>(x)) == std::towlower(static_cast<std::wint_t>(y));
  });
}

}  // namespace

HRESULT Calls::note(const std::string& name) {
  log.push_back(name);
  const auto found = failures_.find(name);
  if (found == failures_.end() || found->second.allowed-- > 0) return S_OK;
  found->second.allowed = 0;
  return raises_ ? korlib::raise(found->second.hr, L"fake", L"The host's words.") : found->second.hr;
}

int Calls::count(const std::string& name) const { return static_cast<int>(std::count(log.begin(), log.end(), name)); }

std::span<const korlib::Member> StringList::members() {
  static constexpr korlib::Member table[] = {
      property<&StringList::get_Item>(L"Item").optional(0).is_default(),
      property<&StringList::get_Count>(L"Count"),
  };
  return table;
}

HRESULT StringList::get_Item(VARIANT index, VARIANT* value) {
  VariantInit(value);
  RETURN_IF_FAILED(calls_->note("StringList.Item"));
  if (!korlib::is_omitted(index)) {
    CComVariant number;
    RETURN_IF_FAILED(VariantChangeType(&number, &index, 0, VT_I4));
    if (number.lVal < 1 || static_cast<std::size_t>(number.lVal) > values.size()) return DISP_E_BADINDEX;
    return VariantCopy(value, &values[static_cast<std::size_t>(number.lVal) - 1]);
  }
  if (values.empty()) return S_OK;
  if (values.size() == 1) return VariantCopy(value, &values[0]);
  std::wstring joined;
  for (const CComVariant& one : values) {
    CComVariant text;
    RETURN_IF_FAILED(VariantChangeType(&text, &one, 0, VT_BSTR));
    if (!joined.empty()) joined += L", ";
    joined += korlib::view_of(text.bstrVal);
  }
  CComVariant(std::wstring_view(joined)).detach_to(value);
  return S_OK;
}

HRESULT StringList::get_Count(int* count) {
  *count = 0;
  RETURN_IF_FAILED(calls_->note("StringList.Count"));
  *count = static_cast<int>(values.size());
  return S_OK;
}

HRESULT StringList::get__NewEnum(IUnknown** enumerator) {
  *enumerator = nullptr;
  return E_NOTIMPL;
}

std::span<const korlib::Member> RequestDictionary::members() {
  static constexpr korlib::Member table[] = {
      property<&RequestDictionary::get_Item>(L"Item").is_default(),
      property<&RequestDictionary::get_Count>(L"Count"),
      property<&RequestDictionary::get_Key>(L"Key"),
  };
  return table;
}

HRESULT RequestDictionary::get_Item(VARIANT key, VARIANT* value) {
  VariantInit(value);
  RETURN_IF_FAILED(calls_->note(name_ + ".Item"));
  CComVariant text;
  RETURN_IF_FAILED(VariantChangeType(&text, &key, 0, VT_BSTR));
  for (const Entry& entry : entries_)
    if (same_name(entry.name, korlib::view_of(text.bstrVal))) return VariantCopy(value, &entry.value);
  const auto none = korlib::make<StringList>(calls_, std::vector<CComVariant>());
  CComVariant(static_cast<IDispatch*>(none.get())).detach_to(value);
  return S_OK;
}

HRESULT RequestDictionary::get__NewEnum(IUnknown** names) {
  *names = nullptr;
  return E_NOTIMPL;
}

HRESULT RequestDictionary::get_Count(int* count) {
  *count = 0;
  RETURN_IF_FAILED(calls_->note(name_ + ".Count"));
  *count = static_cast<int>(entries_.size());
  return S_OK;
}

HRESULT RequestDictionary::get_Key(VARIANT index, VARIANT* key) {
  VariantInit(key);
  RETURN_IF_FAILED(calls_->note(name_ + ".Key"));
  if (index.vt != VT_I4 || index.lVal < 1 || static_cast<std::size_t>(index.lVal) > entries_.size())
    return DISP_E_BADINDEX;
  CComVariant(std::wstring_view(entries_[static_cast<std::size_t>(index.lVal) - 1].name)).detach_to(key);
  return S_OK;
}

void RequestDictionary::set(const std::wstring& name, const Texts& texts) {
  std::vector<CComVariant> values;
  for (const std::wstring& text : texts) values.emplace_back(std::wstring_view(text));
  set_values(name, std::move(values));
}

void RequestDictionary::set_values(const std::wstring& name, std::vector<CComVariant> values) {
  const auto list = korlib::make<StringList>(calls_, std::move(values));
  set_raw(name, CComVariant(static_cast<IDispatch*>(list.get())));
}

void RequestDictionary::set_raw(const std::wstring& name, CComVariant value) {
  std::erase_if(entries_, [&](const Entry& entry) { return same_name(entry.name, name); });
  entries_.push_back({name, std::move(value)});
}

Request::Request(const CallsRef& calls)
    : query_string(korlib::make<RequestDictionary>(calls, "QueryString")),
      form(korlib::make<RequestDictionary>(calls, "Form")),
      server_variables(korlib::make<RequestDictionary>(calls, "ServerVariables")),
      client_certificate(korlib::make<RequestDictionary>(calls, "ClientCertificate")),
      cookies(korlib::make<RequestDictionary>(calls, "Cookies")),
      calls_(calls) {}

std::span<const korlib::Member> Request::members() { return {}; }

HRESULT Request::give(const char* name, const CComPtr<RequestDictionary>& from, asp::IRequestDictionary** values) {
  *values = nullptr;
  RETURN_IF_FAILED(calls_->note(name));
  return from.query(values);
}

HRESULT Request::get_Item(BSTR name, IDispatch** value) {
  *value = nullptr;
  RETURN_IF_FAILED(calls_->note("Request.Item"));
  CComVariant list;
  RETURN_IF_FAILED(query_string->get_Item(korlib::borrowed(name), &list));
  *value = std::exchange(list.pdispVal, nullptr);
  return S_OK;
}
HRESULT Request::get_QueryString(asp::IRequestDictionary** values) {
  return give("Request.QueryString", query_string, values);
}
HRESULT Request::get_Form(asp::IRequestDictionary** values) { return give("Request.Form", form, values); }
HRESULT Request::get_ServerVariables(asp::IRequestDictionary** values) {
  return give("Request.ServerVariables", server_variables, values);
}
HRESULT Request::get_ClientCertificate(asp::IRequestDictionary** values) {
  return give("Request.ClientCertificate", client_certificate, values);
}
HRESULT Request::get_Cookies(asp::IRequestDictionary** values) { return give("Request.Cookies", cookies, values); }

HRESULT Request::get_TotalBytes(LONG* bytes) {
  *bytes = 0;
  RETURN_IF_FAILED(calls_->note("Request.TotalBytes"));
  *bytes = total_bytes != -1 ? total_bytes : static_cast<LONG>(body.size());
  return S_OK;
}

HRESULT Request::BinaryRead(VARIANT* count, VARIANT* data) {
  VariantInit(data);
  read_count = *count;
  const HRESULT hr = calls_->note("Request.BinaryRead");
  if (FAILED(hr)) {
    count->lVal = read_before_failure;
    return hr;
  }
  if (body_value.vt != VT_EMPTY) return VariantCopy(data, &body_value);
  const std::size_t size = std::min(body.size(), static_cast<std::size_t>(std::max(count->lVal, 0)));
  CComSafeArray bytes(VT_UI1, static_cast<ULONG>(size));
  std::copy_n(body.data(), size, bytes.data<char>());
  count->lVal = static_cast<LONG>(size);
  bytes.detach_to(data);
  return S_OK;
}

}  // namespace fake
