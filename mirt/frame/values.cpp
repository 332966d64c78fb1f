#include "frame/values.h"

#include <algorithm>
#include <cstring>
#include <cwctype>

namespace mirt {

namespace {

// Bytes of a value of that type in a VARIANT; the widest are eight.
std::size_t size_of_type(VARTYPE vt) {
  switch (vt) {
    case VT_I1:
    case VT_UI1:
      return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_ERROR:
      return 4;
    default:
      return 8;
  }
}

}  // namespace

HRESULT copy_followed(VARIANT* target, const VARIANT& source) {
  if (!(source.vt & VT_BYREF)) return VariantCopy(target, &source);
  if (!source.byref) return E_INVALIDARG;
  if (source.vt == (VT_BYREF | VT_VARIANT)) {
    const VARIANT& inner = *source.pvarVal;
    return inner.vt == source.vt ? E_INVALIDARG : copy_followed(target, inner);
  }
  VARIANT direct{};
  direct.vt = static_cast<VARTYPE>(source.vt & ~VT_BYREF);
  std::memcpy(&direct.llVal, source.byref, size_of_type(direct.vt));
  return VariantCopy(target, &direct);
}

bool equal_ignoring_case(std::wstring_view a, std::wstring_view b) {
  const auto lower = [](wchar_t c) { return std::towlower(static_cast<std::wint_t>(c)); };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](wchar_t x, wchar_t y) { return x == y || lower(x) == lower(y); });
}

std::size_t element_count(const SAFEARRAY& array) {
  std::size_t count = array.cDims > 0 ? 1 : 0;
  for (USHORT i = 0; i < array.cDims; ++i) count *= array.rgsabound[i].cElements;
  return count;
}

}  // namespace mirt
