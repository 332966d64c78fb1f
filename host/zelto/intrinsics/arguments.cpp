#include "intrinsics/arguments.h"

namespace zelto {

namespace {

bool is_number(const VARIANT& value) {
  switch (value.vt & ~VT_BYREF) {
    case VT_I1:
    case VT_I2:
    case VT_I4:
    case VT_I8:
    case VT_INT:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_UI8:
    case VT_UINT:
    case VT_R4:
    case VT_R8:
      return true;
    default:
      return false;
  }
}

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
  if (is_number(direct)) {
    std::size_t place = 0;
    RETURN_IF_FAILED(read_place(direct, count, place));
    key.place = place;
    return S_OK;
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
  VariantInit(result);
  result->vt = VT_DISPATCH;
  result->pdispVal = object;
  object->AddRef();
  return S_OK;
}

}  // namespace zelto
