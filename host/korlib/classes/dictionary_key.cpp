#include "classes/dictionary_key.h"

#include <bit>
#include <cmath>
#include <limits>

#include <korlib/ptr.h>

#include "base/keyed_hash.h"
#include "base/letter_case.h"

namespace korlib {

HRESULT DictionaryKey::take(Kind kind, std::uint64_t bits) {
  kind_ = kind;
  bits_ = bits;
  return S_OK;
}

HRESULT DictionaryKey::take_real(double number) {
  if (number == std::trunc(number) && std::fabs(number) < 9.0e18) {
    return take(Kind::integer, static_cast<std::uint64_t>(static_cast<LONGLONG>(number)));
  }
  const double same = std::isnan(number) ? std::numeric_limits<double>::quiet_NaN() : number;
  return take(Kind::real, std::bit_cast<std::uint64_t>(same));
}

// Integers of every width, booleans among them.
HRESULT DictionaryKey::take_integer() {
  if (value_.vt == VT_UI8 && value_.ullVal > static_cast<ULONGLONG>(INT64_MAX)) {
    return take_real(static_cast<double>(value_.ullVal));
  }
  if (value_.vt == VT_I4) return take(Kind::integer, static_cast<std::uint64_t>(LONGLONG{value_.lVal}));
  CComVariant wide;
  RETURN_IF_FAILED(VariantChangeType(&wide, &value_, 0, VT_I8));
  return take(Kind::integer, static_cast<std::uint64_t>(wide.llVal));
}

HRESULT DictionaryKey::take_object() {
  CComPtr<IUnknown> identity;  // the one pointer that all interfaces of an object agree on
  if (value_.punkVal) RETURN_IF_FAILED(value_.punkVal->QueryInterface(IID_IUnknown, identity.put_void()));
  return take(Kind::object, reinterpret_cast<std::uintptr_t>(identity.get()));
}

HRESULT DictionaryKey::look() {
  switch (value_.vt) {
    case VT_EMPTY:
      return take(Kind::empty, 0);
    case VT_NULL:
      return take(Kind::null, 0);
    case VT_BSTR:
      text_ = view_of(value_.bstrVal);
      return take(Kind::text, 0);
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return take_object();
    case VT_R4:
      return take_real(static_cast<double>(value_.fltVal));
    case VT_R8:
      return take_real(value_.dblVal);
    case VT_DATE:
      return take_real(value_.date);
    case VT_CY:
      return take_real(static_cast<double>(value_.cyVal.int64) / 10000.0);
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
