#include "classes/dictionary_key.h"

#include <cmath>
#include <cstring>
#include <limits>

#include <korlib/ptr.h>

#include "base/letter_case.h"
#include "classes/keyed_hash.h"

namespace korlib {
namespace {

void view_real(double value, KeyView& view) {
  if (value == std::trunc(value) && std::fabs(value) < 9.0e18) {
    view.kind = KeyView::Kind::kInteger;
    view.bits = static_cast<std::uint64_t>(static_cast<LONGLONG>(value));
    return;
  }
  view.kind = KeyView::Kind::kReal;
  if (std::isnan(value)) value = std::numeric_limits<double>::quiet_NaN();
  std::memcpy(&view.bits, &value, sizeof value);
}

// Integers of every width, booleans among them.
HRESULT view_integer(const VARIANT& key, KeyView& view) {
  if (key.vt == VT_UI8 && key.ullVal > static_cast<ULONGLONG>(INT64_MAX)) {
    view_real(static_cast<double>(key.ullVal), view);
    return S_OK;
  }
  view.kind = KeyView::Kind::kInteger;
  if (key.vt == VT_I4) {
    view.bits = static_cast<std::uint64_t>(LONGLONG{key.lVal});
    return S_OK;
  }
  CComVariant wide;
  RETURN_IF_FAILED(VariantChangeType(&wide, &key, 0, VT_I8));
  view.bits = static_cast<std::uint64_t>(wide.llVal);
  return S_OK;
}

HRESULT view_number(const VARIANT& key, KeyView& view) {
  switch (key.vt) {
    case VT_R4:
      view_real(static_cast<double>(key.fltVal), view);
      return S_OK;
    case VT_R8:
      view_real(key.dblVal, view);
      return S_OK;
    case VT_DATE:
      view_real(key.date, view);
      return S_OK;
    case VT_CY:
      view_real(static_cast<double>(key.cyVal.int64) / 10000.0, view);
      return S_OK;
    case VT_BOOL:
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_UI4:
    case VT_I8:
    case VT_UI8:
    case VT_INT:
    case VT_UINT:
      return view_integer(key, view);
    default:
      return DISP_E_TYPEMISMATCH;
  }
}

HRESULT view_value(const VARIANT& key, KeyView& view) {
  switch (key.vt) {
    case VT_EMPTY:
      view.kind = KeyView::Kind::kEmpty;
      return S_OK;
    case VT_NULL:
      view.kind = KeyView::Kind::kNull;
      return S_OK;
    case VT_BSTR:
      view.kind = KeyView::Kind::kText;
      view.text = view_of(key.bstrVal);
      return S_OK;
    case VT_DISPATCH:
    case VT_UNKNOWN: {
      view.kind = KeyView::Kind::kObject;
      CComPtr<IUnknown> identity;  // the one pointer that all interfaces of an object agree on
      if (key.punkVal) RETURN_IF_FAILED(key.punkVal->QueryInterface(IID_IUnknown, identity.put_void()));
      view.bits = reinterpret_cast<std::uintptr_t>(identity.get());
      return S_OK;
    }
    default:
      return view_number(key, view);
  }
}

}  // namespace

HRESULT view_key(const VARIANT& key, KeyView& view) {
  view = {};
  return view_value(key, view);
}

std::size_t hash_key(const KeyView& view, bool ignore_case) {
  KeyedHash hash(static_cast<std::uint64_t>(view.kind));
  if (view.kind == KeyView::Kind::kText) {
    for (const wchar_t c : view.text) hash.add(static_cast<std::uint64_t>(ignore_case ? base::fold(c) : c));
  } else {
    hash.add(view.bits);
  }
  return hash.finish();
}

bool same_key(const KeyView& a, const KeyView& b, bool ignore_case) {
  if (a.hash != b.hash || a.kind != b.kind || a.bits != b.bits) return false;
  return ignore_case ? base::equal_folded(a.text, b.text) : a.text == b.text;
}

}  // namespace korlib
