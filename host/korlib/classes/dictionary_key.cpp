#include "classes/dictionary_key.h"

#include <bit>
#include <cmath>
#include <limits>

#include <korlib/ptr.h>

#include "base/keyed_hash.h"
#include "base/letter_case.h"

namespace korlib {

void DictionaryKey::take_real(double number) {
  if (number == std::trunc(number) && std::fabs(number) < 9.0e18) {
    kind_ = Kind::integer;
    bits_ = static_cast<std::uint64_t>(static_cast<LONGLONG>(number));
    return;
  }
  kind_ = Kind::real;
  bits_ = std::bit_cast<std::uint64_t>(std::isnan(number) ? std::numeric_limits<double>::quiet_NaN() : number);
}

// Integers of every width, booleans among them.
HRESULT DictionaryKey::take_integer() {
  if (value_.vt == VT_UI8 && value_.ullVal > static_cast<ULONGLONG>(INT64_MAX)) {
    take_real(static_cast<double>(value_.ullVal));
    return S_OK;
  }
  kind_ = Kind::integer;
  if (value_.vt == VT_I4) {
    bits_ = static_cast<std::uint64_t>(LONGLONG{value_.lVal});
    return S_OK;
  }
  CComVariant wide;
  RETURN_IF_FAILED(VariantChangeType(&wide, &value_, 0, VT_I8));
  bits_ = static_cast<std::uint64_t>(wide.llVal);
  return S_OK;
}

HRESULT DictionaryKey::look_at_number() {
  switch (value_.vt) {
    case VT_R4:
      take_real(static_cast<double>(value_.fltVal));
      return S_OK;
    case VT_R8:
      take_real(value_.dblVal);
      return S_OK;
    case VT_DATE:
      take_real(value_.date);
      return S_OK;
    case VT_CY:
      take_real(static_cast<double>(value_.cyVal.int64) / 10000.0);
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
      return take_integer();
    default:
      return DISP_E_TYPEMISMATCH;
  }
}

HRESULT DictionaryKey::look() {
  switch (value_.vt) {
    case VT_EMPTY:
      kind_ = Kind::empty;
      return S_OK;
    case VT_NULL:
      kind_ = Kind::null;
      return S_OK;
    case VT_BSTR:
      kind_ = Kind::text;
      text_ = view_of(value_.bstrVal);
      return S_OK;
    case VT_DISPATCH:
    case VT_UNKNOWN: {
      kind_ = Kind::object;
      CComPtr<IUnknown> identity;  // the one pointer that all interfaces of an object agree on
      if (value_.punkVal) RETURN_IF_FAILED(value_.punkVal->QueryInterface(IID_IUnknown, identity.put_void()));
      bits_ = reinterpret_cast<std::uintptr_t>(identity.get());
      return S_OK;
    }
    default:
      return look_at_number();
  }
}

HRESULT DictionaryKey::load(const VARIANT& value) {
  // An omitted argument that a component handed on is the empty key.
  if (!is_omitted(value)) RETURN_IF_FAILED(VariantCopyInd(&value_, &value));
  return look();
}

void DictionaryKey::prepare(bool ignore_case) {
  ignores_case_ = ignore_case;
  base::KeyedHash hash(static_cast<std::uint64_t>(kind_));
  if (kind_ == Kind::text) {
    for (const wchar_t c : text_) hash.add(static_cast<std::uint64_t>(ignore_case ? base::fold(c) : c));
  } else {
    hash.add(bits_);
  }
  hash_ = hash.finish();
}

bool DictionaryKey::operator==(const DictionaryKey& other) const {
  if (hash_ != other.hash_ || kind_ != other.kind_ || bits_ != other.bits_) return false;
  return ignores_case_ ? base::equal_folded(text_, other.text_) : text_ == other.text_;
}

}  // namespace korlib
