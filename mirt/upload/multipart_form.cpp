#include "upload/multipart_form.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "frame/error.h"
#include "upload/upload_classes.h"

GMultipartForm::Name::Name(CComBSTR text) : text_(std::move(text)) {
  constexpr std::size_t kPrime = 0x100000001b3;
  const std::wstring_view whole = text_.view();
  length_ = std::min(whole.find(L'\0'), whole.size());
  number_ = length_;
  for (const wchar_t c : view()) number_ = (number_ ^ static_cast<std::uint32_t>(c)) * kPrime;
}

HRESULT GMultipartForm::add(CComBSTR name, CComVariant value) {
  return mirt::guarded([&] {
    const auto [field, is_new] = fields_.try_emplace(Name(std::move(name)));
    try {
      field->second.push_back(std::move(value));
    } catch (...) {
      if (is_new) fields_.erase(field);
      throw;
    }
    return S_OK;
  });
}

STDMETHODIMP GMultipartForm::get_Item(VARIANT key, VARIANT* value) {
  return mirt::guarded(value, [&] {
    CComVariant name;
    RETURN_IF_FAILED(VariantChangeType(&name, &key, 0, VT_BSTR));
    CComBSTR wanted;
    wanted.attach(name.bstrVal);
    name.vt = VT_EMPTY;
    const auto field = fields_.find(Name(std::move(wanted)));
    if (field == fields_.end() || field->second.empty()) return S_OK;
    CComPtr<ZeltoTypeLibrary::IStringList> spList;
    RETURN_IF_FAILED(g_oCF_MultipartFormStringList.CreateInstance(
        nullptr, korlib::iid_of<ZeltoTypeLibrary::IStringList>, spList.put_void()));
    static_cast<GMultipartFormStringList*>(spList.get())->show(this, &field->second);
    value->vt = VT_DISPATCH;
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): it does not see a reference leave in a VARIANT
    value->pdispVal = spList.detach();
    return S_OK;
  });
}

STDMETHODIMP GMultipartForm::get__NewEnum(IUnknown** names) {
  if (names) *names = nullptr;
  return E_NOTIMPL;
}

STDMETHODIMP GMultipartForm::get_Count(int* count) {
  if (!count) return E_POINTER;
  *count = static_cast<int>(fields_.size());
  return S_OK;
}

STDMETHODIMP GMultipartForm::get_Key(VARIANT, VARIANT* key) {
  if (key) VariantInit(key);
  return E_NOTIMPL;
}

STDMETHODIMP GMultipartFormStringList::get_Item(VARIANT index, VARIANT* value) {
  return mirt::guarded(value, [&] {
    if (!values_) return E_UNEXPECTED;
    if (index.vt != VT_ERROR) {
      CComVariant number;
      RETURN_IF_FAILED(VariantChangeType(&number, &index, 0, VT_I4));
      if (number.lVal < 1 || static_cast<std::size_t>(number.lVal) > values_->size()) return DISP_E_BADINDEX;
      return VariantCopy(value, &(*values_)[static_cast<std::size_t>(number.lVal) - 1]);
    }
    return values_->size() == 1 ? VariantCopy(value, &values_->front()) : joined(value);
  });
}

HRESULT GMultipartFormStringList::joined(VARIANT* value) const {
  std::wstring all;
  for (const CComVariant& one : *values_) {
    CComVariant text;
    RETURN_IF_FAILED(VariantChangeType(&text, &one, 0, VT_BSTR));
    if (&one != &values_->front()) all.append(L", ");
    all.append(korlib::view_of(text.bstrVal));
  }
  BSTR text = korlib::new_bstr(all);
  if (!text) return E_OUTOFMEMORY;
  value->vt = VT_BSTR;
  value->bstrVal = text;
  return S_OK;
}

STDMETHODIMP GMultipartFormStringList::get_Count(int* count) {
  if (!count) return E_POINTER;
  *count = values_ ? static_cast<int>(values_->size()) : 0;
  return S_OK;
}

STDMETHODIMP GMultipartFormStringList::get__NewEnum(IUnknown** values) {
  if (values) *values = nullptr;
  return E_NOTIMPL;
}
