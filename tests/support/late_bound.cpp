#include "support/late_bound.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ostream>

namespace test {

namespace {

std::wstring hexadecimal(HRESULT hr) {
  wchar_t text[24];
  std::swprintf(text, std::size(text), L"<code %08X>", static_cast<unsigned>(hr));
  return text;
}

}  // namespace

CComVariant value_of(const std::vector<std::uint8_t>& bytes) {
  CComVariant value;
  CComSafeArray array(VT_UI1, static_cast<ULONG>(bytes.size()));
  if (!bytes.empty()) std::memcpy(array.data<std::uint8_t>(), bytes.data(), bytes.size());
  array.detach_to(&value);
  return value;
}

CComVariant value_of(const std::vector<CComVariant>& elements) {
  CComVariant value;
  CComSafeArray array(VT_VARIANT, static_cast<ULONG>(elements.size()));
  for (std::size_t i = 0; i < elements.size(); ++i) VariantCopy(array.data<VARIANT>() + i, &elements[i]);
  array.detach_to(&value);
  return value;
}

ErrorText take_error() {
  CComPtr<IErrorInfo> info;
  ErrorText text;
  if (GetErrorInfo(0, info.put()) != S_OK || !info) return text;
  CComBSTR source;
  CComBSTR description;
  info->GetSource(source.put());
  info->GetDescription(description.put());
  text.source = source.view();
  text.description = description.view();
  return text;
}

Answer invoke(IDispatch* object, DISPID id, WORD flags, const std::vector<CComVariant>& arguments) {
  Answer answer;
  SetErrorInfo(0, nullptr);
  std::vector<CComVariant> reversed(arguments.rbegin(), arguments.rend());
  std::vector<VARIANT> block(reversed.begin(), reversed.end());
  DISPID put_name = DISPID_PROPERTYPUT;
  const bool is_write = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
  DISPPARAMS params{block.data(), is_write ? &put_name : nullptr, static_cast<UINT>(block.size()), is_write ? 1u : 0u};
  VARIANT result;
  std::memset(static_cast<void*>(&result), 0xA5, sizeof result);
  answer.hr = object->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, flags, &params, &result, nullptr, nullptr);
  if (result.vt == 0xA5A5) {
    EXPECT_TRUE(false) << "the result was left undefined";
  } else {
    answer.value.attach(&result);
  }
  if (FAILED(answer.hr)) {
    EXPECT_EQ(VT_EMPTY, answer.value.vt) << "a failed call left a result";
  }
  const ErrorText error = take_error();
  answer.source = error.source;
  answer.description = error.description;
  return answer;
}

DISPID id_of(IDispatch* object, const wchar_t* name) {
  LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
  DISPID id = 12345;
  const HRESULT hr = object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_SYSTEM_DEFAULT, &id);
  if (FAILED(hr)) {
    EXPECT_EQ(DISPID_UNKNOWN, id);
  }
  return SUCCEEDED(hr) ? id : DISPID_UNKNOWN;
}

Answer invoke(IDispatch* object, const wchar_t* name, WORD flags, const std::vector<CComVariant>& arguments) {
  LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
  DISPID id = DISPID_UNKNOWN;
  Answer answer;
  answer.hr = object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_SYSTEM_DEFAULT, &id);
  return FAILED(answer.hr) ? answer : invoke(object, id, flags, arguments);
}

std::wstring text_of(const Answer& answer) {
  if (FAILED(answer.hr)) return hexadecimal(answer.hr) + answer.description;
  if (answer.value.vt != VT_BSTR) return L"<type " + std::to_wstring(answer.value.vt) + L">";
  return std::wstring(korlib::view_of(answer.value.bstrVal));
}

std::vector<std::uint8_t> bytes_of(const Answer& answer) {
  if (answer.value.vt != (VT_ARRAY | VT_UI1) || !answer.value.parray) return {};
  const SAFEARRAY* array = answer.value.parray;
  const auto* data = static_cast<const std::uint8_t*>(array->pvData);
  return {data, data + array->rgsabound[0].cElements};
}

bool is_true(const Answer& answer) { return answer.value.vt == VT_BOOL && answer.value.boolVal == VARIANT_TRUE; }

CComPtr<IDispatch> object_of(const Answer& answer) {
  return answer.value.vt == VT_DISPATCH ? CComPtr<IDispatch>(answer.value.pdispVal) : CComPtr<IDispatch>();
}

}  // namespace test

void PrintTo(const CComVariant& value, std::ostream* out) {
  *out << "variant of type " << value.vt;
  CComVariant text;
  if (SUCCEEDED(VariantChangeType(&text, &value, 0, VT_BSTR))) {
    *out << ": " << testing::PrintToString(std::wstring(korlib::view_of(text.bstrVal)));
  }
}
