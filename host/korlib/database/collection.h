// What Errors, Fields and Parameters have in common.
#pragma once

#include <vector>

#include <korlib_host/enumerator.h>

#include "base/letter_case.h"
#include "database/properties.h"

namespace korlib {

// Count, enumeration, and elements by number or name. Self tells how many elements there are, gives each, and finds the
// one that a script asks for, with find_element():
//   std::size_t size() const;
//   CComPtr<Element> element(std::size_t at) const;
//   HRESULT find(const VARIANT& index, std::size_t& at) const;
template <class Self>
class Collection : public DispatchObject<Self> {
 public:
  HRESULT get_Count(LONG* count) { return give(static_cast<LONG>(self().size()), count); }
  HRESULT get__NewEnum(IUnknown** elements) {
    std::vector<CComVariant> all;
    for (std::size_t at = 0; at < self().size(); ++at) all.emplace_back(self().element(at).get());
    return make_enumerator(std::move(all), elements);
  }
  HRESULT get_Item(VARIANT index, IDispatch** item) {
    std::size_t at = 0;
    RETURN_IF_FAILED(self().find(index, at));
    return give(self().element(at).get(), item);
  }

 private:
  Self& self() { return static_cast<Self&>(*this); }
};

// Sets `at` to the place of the element that a script asks for by number, counted from 0, or by name, in any letter
// case; `name_of(place)` is an element's name. When there is none, raises kItemNotFound with `missing` before what was
// asked for, as in: The recordset has no field "price".
template <class NameOf>
HRESULT find_element(const VARIANT& index, std::size_t size, NameOf name_of, std::wstring_view source,
                     const wchar_t* missing, std::size_t& at) {
  CComVariant wanted;
  RETURN_IF_FAILED(VariantCopyInd(&wanted, &index));
  if (wanted.vt == VT_BSTR) {
    const std::wstring_view name = view_of(wanted.bstrVal);
    for (at = 0; at < size; ++at) {
      if (base::equal_folded(name_of(at), name)) return S_OK;
    }
    return raise(kItemNotFound, source, missing + (L" \"" + std::wstring(name.substr(0, 100)) + L"\"."));
  }
  RETURN_IF_FAILED(wanted.change_type(VT_I4));
  at = static_cast<std::size_t>(wanted.lVal);
  if (wanted.lVal >= 0 && at < size) return S_OK;
  return raise(kItemNotFound, source, missing + (L" " + std::to_wstring(wanted.lVal) + L"."));
}

}  // namespace korlib
