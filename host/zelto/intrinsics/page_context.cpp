#include "intrinsics/page_context.h"

#include <algorithm>

#include "intrinsics/arguments.h"

namespace zelto {

HRESULT PageContext::QueryInterface(REFIID riid, void** ppv) {
  return korlib::query_list<IGetContextProperties, IUnknown>(this, riid, ppv);
}

HRESULT PageContext::Count(LONG* count) { return give(static_cast<LONG>(objects_.size()), count); }

HRESULT PageContext::GetProperty(BSTR name, VARIANT* value) {
  if (!value) return E_POINTER;
  VariantInit(value);
  const std::wstring_view wanted = korlib::view_of(name);
  const auto row = std::ranges::find_if(objects_, [&](const auto& object) { return object.first == wanted; });
  return row == objects_.end() ? E_INVALIDARG : give_object(row->second.get(), value);
}

HRESULT PageContext::EnumNames(IUnknown** names) {
  return guarded(L"Context", names, [&] { return give_texts(objects_, names, &Objects::value_type::first); });
}

}  // namespace zelto
