#include "intrinsics/page_context.h"

#include <korlib_host/enumerator.h>
#include <korlib_host/errors.h>

#include <algorithm>

namespace zelto {

HRESULT PageContext::QueryInterface(REFIID riid, void** ppv) {
  return korlib::query_list<IGetContextProperties, IUnknown>(this, riid, ppv);
}

HRESULT PageContext::Count(LONG* count) {
  if (!count) return E_POINTER;
  *count = static_cast<LONG>(objects_.size());
  return S_OK;
}

HRESULT PageContext::GetProperty(BSTR name, VARIANT* value) {
  if (!value) return E_POINTER;
  VariantInit(value);
  const std::wstring_view wanted = korlib::view_of(name);
  const auto row = std::ranges::find_if(objects_, [&](const auto& object) { return object.first == wanted; });
  if (row == objects_.end()) return E_INVALIDARG;
  value->vt = VT_DISPATCH;
  value->pdispVal = row->second.get();
  value->pdispVal->AddRef();
  return S_OK;
}

HRESULT PageContext::EnumNames(IUnknown** names) {
  if (!names) return E_POINTER;
  *names = nullptr;
  return korlib::guarded(L"Context", [&] {
    std::vector<CComVariant> values;
    for (const auto& object : objects_) values.emplace_back(std::wstring_view(object.first));
    return korlib::make_enumerator(std::move(values), names);
  });
}

}  // namespace zelto
