#include "classes/dictionary_key.h"

#include <bit>
#include <cmath>
#include <limits>
#include <utility>

#include <korlib/ptr.h>
#include <korlib_host/own_strings.h>

#include "base/keyed_hash.h"
#include "base/letter_case.h"

namespace korlib {

HRESULT KeyForm::take(Kind kind, std::uint64_t bits) {
  kind_ = kind;
  bits_ = bits;
  return S_OK;
}

HRESULT KeyForm::take_real(double number) {
  if (number == std::trunc(number) && std::fabs(number) < 9.0e18) {
    return take(Kind::integer, static_cast<std::uint64_t>(static_cast<LONGLONG>(number)));
  }
  const double same = std::isnan(number) ? std::numeric_limits<double>::quiet_NaN() : number;
  return take(Kind::real, std::bit_cast<std::uint64_t>(same));
}

// Integers of every width, booleans among them.
HRESULT KeyForm::take_integer(const VARIANT& value) {
  if (value.vt == VT_UI8 && value.ullVal > static_cast<ULONGLONG>(INT64_MAX)) {
    return take_real(static_cast<double>(value.ullVal));
  }
  if (value.vt == VT_I4) return take(Kind::integer, static_cast<std::uint64_t>(LONGLONG{value.lVal}));
  CComVariant wide;
  RETURN_IF_FAILED(VariantChangeType(&wide, &value, 0, VT_I8));
  return take(Kind::integer, static_cast<std::uint64_t>(wide.llVal));
}

HRESULT KeyForm::take_object(IUnknown* object) {
  CComPtr<IUnknown> identity;  // the one pointer that all interfaces of an object agree on
  if (object) RETURN_IF_FAILED(object->QueryInterface(IID_IUnknown, identity.put_void()));
  return take(Kind::object, reinterpret_cast<std::uintptr_t>(identity.get()));
}

HRESULT KeyForm::look(const VARIANT& value) {
  switch (value.vt) {
    case VT_EMPTY:
      return take(Kind::empty, 0);
    case VT_NULL:
      return take(Kind::null, 0);
    case VT_BSTR:
      text_ = korlib_host::characters_of(value.bstrVal);
      return take(Kind::text, 0);
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return take_object(value.punkVal);
    case VT_R4:
      return take_real(static_cast<double>(value.fltVal));
    case VT_R8:
      return take_real(value.dblVal);
    case VT_DATE:
      return take_real(value.date);
    case VT_CY:
      return take_real(static_cast<double>(value.cyVal.int64) / 10000.0);
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
      return take_integer(value);
    default:
      return DISP_E_TYPEMISMATCH;
  }
}

void KeyForm::prepare(bool ignore_case) {
  if (std::exchange(is_prepared_, true)) return;
  ignores_case_ = ignore_case;
  base::KeyedHash hash(static_cast<std::uint64_t>(kind_));
  if (kind_ == Kind::text) {
    if (ignore_case) {
      hash.add_text(text_, base::fold);
    } else {
      hash.add_text(text_, [](wchar_t c) { return c; });
    }
  } else {
    hash.add(bits_);
  }
  hash_ = hash.finish();
}

bool KeyForm::has_text_of(const KeyForm& other, bool ignore_case) const {
  return ignore_case ? base::equal_folded(text_, other.text_) : text_ == other.text_;
}

HRESULT WantedKey::load(const VARIANT& value) {
  // An omitted argument that a component handed on is the empty key.
  if (is_omitted(value)) return look(held_);
  value_ = &value;
  if (value.vt & VT_BYREF) {
    RETURN_IF_FAILED(VariantCopyInd(&held_, &value));
    value_ = &held_;
  }
  return look(*value_);
}

HRESULT DictionaryKey::copy(const WantedKey& wanted) {
  RETURN_IF_FAILED(VariantCopy(&value_, &wanted.value()));
  KeyForm::operator=(wanted);
  if (value_.vt == VT_BSTR) set_text(korlib_host::characters_of(value_.bstrVal));
  return S_OK;
}

}  // namespace korlib
