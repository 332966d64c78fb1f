#include "intrinsics/arguments.h"

#include <algorithm>

namespace zelto {

namespace {

constexpr VARTYPE kNumbers[] = {VT_I1,  VT_I2,  VT_I4,  VT_I8,   VT_INT, VT_UI1,
                                VT_UI2, VT_UI4, VT_UI8, VT_UINT, VT_R4,  VT_R8};

}  // namespace

HRESULT read_place(const VARIANT& value, std::size_t count, std::size_t& place) {
  CComVariant number;
  RETURN_IF_FAILED(VariantChangeType(&number, &value, 0, VT_I4));
  if (number.lVal < 1 || static_cast<std::size_t>(number.lVal) > count) return DISP_E_BADINDEX;
  place = static_cast<std::size_t>(number.lVal) - 1;
  return S_OK;
}

HRESULT read_key(const VARIANT& value, std::size_t count, VariantKey& key) {
  CComVariant direct;
  RETURN_IF_FAILED(VariantCopyInd(&direct, &value));
  if (std::ranges::find(kNumbers, direct.vt) != std::end(kNumbers)) {
    return read_place(direct, count, key.place.emplace());
  }
  RETURN_IF_FAILED(direct.change_type(VT_BSTR));
  key.name = korlib::view_of(direct.bstrVal);
  return S_OK;
}

HRESULT give_text(std::wstring_view text, BSTR* result) {
  if (!result) return E_POINTER;
  *result = korlib::new_bstr(text);
  return *result ? S_OK : E_OUTOFMEMORY;
}

HRESULT give_text(std::wstring_view text, VARIANT* result) {
  if (!result) return E_POINTER;
  VariantInit(result);
  result->vt = VT_BSTR;
  return give_text(text, &result->bstrVal);
}

HRESULT give_object(IDispatch* object, VARIANT* result) {
  if (!result) return E_POINTER;
  CComVariant(object).detach_to(result);
  return S_OK;
}

}  // namespace zelto
