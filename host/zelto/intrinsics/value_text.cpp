#include "intrinsics/value_text.h"

#include <korlib/comvariant.h>
#include <korlib/errorinfo.h>
#include <korlib/ptr.h>
#include <korlib_host/errors.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "text/locale.h"

namespace zelto {

namespace {

constexpr std::wstring_view kSource = L"Zelto";
constexpr int kMostArrays = 200;  // as many as the script lets out
constexpr int kMostObjects = 16;

// An object without a default member, or with one that is not a property or needs arguments, has no value.
bool has_no_default(HRESULT hr) {
  constexpr HRESULT kNotOptional = korlib::hresult(0x8002000F);
  return hr == DISP_E_MEMBERNOTFOUND || hr == DISP_E_BADPARAMCOUNT || hr == kNotOptional || hr == DISP_E_UNKNOWNNAME ||
         hr == E_NOTIMPL;
}

// Bounds are kept with the last dimension first.
const SAFEARRAYBOUND& bound_of(const SAFEARRAY& array, std::size_t dimension) {
  return array.rgsabound[array.cDims - 1 - dimension];
}

// The element as a value that owns nothing.
VARIANT view_of(const SAFEARRAY& array, const void* element) {
  VARIANT value{};
  if (array.vtElement == VT_VARIANT) {
    const auto& held = *static_cast<const VARIANT*>(element);
    value.vt = held.vt;  // assigning it would copy what it holds
    value.llVal = held.llVal;
  } else {
    value.vt = array.vtElement;
    std::memcpy(&value.llVal, element, std::min<std::size_t>(array.cbElements, sizeof value.llVal));
  }
  return value;
}

// How many arrays and objects are being written, one inside the other.
struct Depth {
  int arrays = 0;
  int objects = 0;
};

class Writer {
 public:
  Writer(LONG lcid, std::wstring& text) : lcid_(lcid), text_(text) {}

  HRESULT add(const VARIANT& value, Depth depth) {
    if (value.vt & VT_BYREF) {
      CComVariant direct;
      RETURN_IF_FAILED(VariantCopyInd(&direct, &value));
      return add(direct, depth);
    }
    if (value.vt & VT_ARRAY) return add_array(value.parray, depth);
    switch (value.vt) {
      case VT_EMPTY:
      case VT_NULL:
        return S_OK;
      case VT_BSTR:
        text_ += korlib::view_of(value.bstrVal);
        return S_OK;
      case VT_ERROR:
        if (!korlib::is_omitted(value)) text_ += std::to_wstring(value.scode);
        return S_OK;
      case VT_DATE:
        return add_date(value);
      case VT_DISPATCH:
      case VT_UNKNOWN:
        return add_object(value, depth);
      default:
        return add_number(value);
    }
  }

 private:
  HRESULT add_number(const VARIANT& value) {
    CComVariant neutral;
    RETURN_IF_FAILED(VariantChangeType(&neutral, &value, 0, VT_BSTR));
    const std::wstring_view text = korlib::view_of(neutral.bstrVal);
    const LocaleText* locale = value.vt == VT_BOOL ? nullptr : LocaleText::of(lcid_);
    text_ += locale ? locale->number(text) : text;
    return S_OK;
  }

  HRESULT add_date(const VARIANT& value) {
    CComVariant neutral;
    if (FAILED(VariantChangeType(&neutral, &value, 0, VT_BSTR))) {
      return korlib::raise(DISP_E_OVERFLOW, kSource, L"A date outside the years 100 to 9999 has no text.");
    }
    const LocaleText* locale = LocaleText::of(lcid_);
    text_ += locale ? locale->date(value.date) : korlib::view_of(neutral.bstrVal);
    return S_OK;
  }

  HRESULT add_object(const VARIANT& value, Depth depth) {
    if (++depth.objects > kMostObjects) {
      return korlib::raise(E_INVALIDARG, kSource,
                           L"The object's default value is an object, and so on without an end.");
    }
    CComVariant plain;
    bool has_none = false;
    RETURN_IF_FAILED(read_default_value(value, &plain, &has_none));
    if (!has_none) return add(plain, depth);
    text_ += L"[object Object]";
    return S_OK;
  }

  HRESULT add_array(SAFEARRAY* array, Depth depth) {
    if (!array || array->cDims == 0) return S_OK;
    if (++depth.arrays > kMostArrays) {
      return korlib::raise(E_INVALIDARG, kSource, L"The array is nested too deeply to be written.");
    }
    std::vector<LONG> indices(array->cDims);
    bool is_first = true;
    return add_dimension(*array, depth, indices, 0, is_first);
  }

  HRESULT add_dimension(SAFEARRAY& array, Depth depth, std::vector<LONG>& indices, std::size_t dimension,
                        bool& is_first) {
    const SAFEARRAYBOUND& bound = bound_of(array, dimension);
    for (ULONG i = 0; i < bound.cElements; ++i) {
      indices[dimension] = static_cast<LONG>(static_cast<ULONG>(bound.lLbound) + i);
      if (dimension + 1 < indices.size()) {
        RETURN_IF_FAILED(add_dimension(array, depth, indices, dimension + 1, is_first));
        continue;
      }
      if (!is_first) text_ += L',';
      is_first = false;
      void* element = nullptr;
      RETURN_IF_FAILED(SafeArrayPtrOfIndex(&array, indices.data(), &element));
      RETURN_IF_FAILED(add(view_of(array, element), depth));
    }
    return S_OK;
  }

  LONG lcid_;
  std::wstring& text_;
};

}  // namespace

HRESULT append_value_text(const VARIANT& value, LONG lcid, std::wstring& text) {
  return Writer(lcid, text).add(value, {});
}

HRESULT read_default_value(const VARIANT& value, VARIANT* plain, bool* has_none) {
  VariantInit(plain);
  *has_none = false;
  if (value.vt != VT_DISPATCH && value.vt != VT_UNKNOWN) return VariantCopy(plain, &value);
  if (!value.punkVal) return S_OK;
  CComPtr<IDispatch> object;
  HRESULT hr = DISP_E_MEMBERNOTFOUND;
  DISPPARAMS none{};
  CComVariant answer;
  // As a property: a call would run a script's function.
  if (SUCCEEDED(value.punkVal->QueryInterface(IID_IDispatch, object.put_void()))) {
    hr = object->Invoke(DISPID_VALUE, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_PROPERTYGET, &none, &answer, nullptr,
                        nullptr);
  }
  *has_none = has_no_default(hr);
  if (*has_none) return SetErrorInfo(0, nullptr);
  RETURN_IF_FAILED(hr);
  // The answer may be a reference into its object, so it is copied while the object is still there.
  return VariantCopyInd(plain, &answer);
}

}  // namespace zelto
