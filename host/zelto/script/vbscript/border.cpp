#include "script/vbscript/border.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "script/realm.h"
#include "script/rooted_values.h"
#include "script/small_integer.h"
#include "script/vbscript/library.h"

namespace zelto::script::vbscript {
namespace {

constexpr double kMostElements = 1 << 24;

bool is_short(double number) { return number >= -32768 && number <= 32767; }
bool is_long(double number) {
  return number >= std::numeric_limits<LONG>::min() && number <= std::numeric_limits<LONG>::max() &&
         number == std::trunc(number);
}

void number_to_variant(double number, VARIANT* out) {
  if (!is_long(number)) {
    out->vt = VT_R8;
    out->dblVal = number;
  } else if (is_short(number)) {
    out->vt = VT_I2;
    out->iVal = static_cast<SHORT>(number);
  } else {
    out->vt = VT_I4;
    out->lVal = static_cast<LONG>(number);
  }
}

// What pack() has answered.
class Packed {
 public:
  Packed(Realm& realm, JSValueRef packed) : realm_(realm), packed_(object_of(packed)) {}
  JSValueRef at(unsigned i) const { return JSObjectGetPropertyAtIndex(realm_.context(), packed_, i, nullptr); }
  double number(unsigned i) const { return JSValueToNumber(realm_.context(), at(i), nullptr); }

  bool to_variant(VARIANT* out, JSValueRef* exception) const {
    const int kind = static_cast<int>(number(0));
    if (kind < 0) return vbscript::to_variant(realm_, at(1), out, exception);
    switch (kind) {
      case VT_DISPATCH:
        out->pdispVal = nullptr;
        break;
      case VT_ERROR:
        out->scode = DISP_E_PARAMNOTFOUND;
        break;
      case VT_I4:
        out->lVal = static_cast<LONG>(number(1));
        break;
      case VT_R4:
        out->fltVal = static_cast<float>(number(1));
        break;
      case VT_UI1:
        out->bVal = static_cast<BYTE>(number(1));
        break;
      case VT_CY:
        out->cyVal.int64 = amount(text_of(realm_.context(), at(1)));
        break;
      case VT_ARRAY | VT_VARIANT:
        return array_to_variant(out, exception);
      case VT_ARRAY | VT_UI1:
        return realm_.values().to_variant(at(1), out, exception);
      default:  // VT_R8 and VT_DATE are of one size
        out->dblVal = number(1);
    }
    out->vt = static_cast<VARTYPE>(kind);
    return true;
  }

 private:
  static LONGLONG amount(const std::wstring& digits) {
    const std::string narrow = to_utf8(digits);
    LONGLONG value = 0;
    std::from_chars(narrow.data(), narrow.data() + narrow.size(), value);
    return value;
  }

  double length_of(unsigned i) const {
    return JSValueToNumber(realm_.context(), property(realm_.context(), object_of(at(i)), "length"), nullptr);
  }

  // An array without bounds has one dimension outside, without elements.
  bool array_to_variant(VARIANT* out, JSValueRef* exception) const {
    JSContextRef ctx = realm_.context();
    if (stack_is_low()) return realm_.errors().raise_out_of_stack(exception);
    std::vector<SAFEARRAYBOUND> bounds;
    const auto dimensions = static_cast<unsigned>(length_of(1));
    for (unsigned i = 0; i < dimensions; ++i) {
      JSValueRef upper = JSObjectGetPropertyAtIndex(ctx, object_of(at(1)), i, nullptr);
      bounds.push_back({static_cast<ULONG>(JSValueToNumber(ctx, upper, nullptr) + 1), 0});
    }
    if (bounds.empty()) bounds.push_back({0, 0});
    const double total = length_of(2);
    SAFEARRAY* made =
        total <= kMostElements ? SafeArrayCreate(VT_VARIANT, static_cast<UINT>(bounds.size()), bounds.data()) : nullptr;
    if (!made) return realm_.errors().raise(E_OUTOFMEMORY, {}, exception);
    out->vt = VT_ARRAY | VT_VARIANT;  // whoever fails clears it
    out->parray = made;
    auto* elements = static_cast<VARIANT*>(made->pvData);
    for (unsigned i = 0; i < static_cast<unsigned>(total); ++i) {
      JSValueRef element = JSObjectGetPropertyAtIndex(ctx, object_of(at(2)), i, exception);
      if (*exception || !vbscript::to_variant(realm_, element, elements + i, exception)) {
        VariantClear(out);
        return false;
      }
    }
    return true;
  }

  Realm& realm_;
  JSObjectRef packed_;
};

const Library& library_of(Realm& realm) { return *realm.world().library(); }

JSValueRef boxed(Realm& realm, int kind, double number, JSValueRef* exception) {
  return library_of(realm).box(kind, JSValueMakeNumber(realm.context(), number), exception);
}

JSValueRef long_to_script(Realm& realm, LONG number, JSValueRef* exception) {
  return is_short(number) ? boxed(realm, VT_I4, number, exception) : JSValueMakeNumber(realm.context(), number);
}

JSValueRef double_to_script(Realm& realm, double number, JSValueRef* exception) {
  return is_long(number) ? boxed(realm, VT_R8, number, exception) : JSValueMakeNumber(realm.context(), number);
}

// Of a type that the language does not have.
JSValueRef other_number_to_script(Realm& realm, const VARIANT& value, JSValueRef* exception) {
  CComVariant number;
  const HRESULT hr = VariantChangeType(&number, &value, 0, VT_R8);
  if (FAILED(hr)) return realm.errors().raise(hr, {}, exception);
  return is_long(number.dblVal) ? long_to_script(realm, static_cast<LONG>(number.dblVal), exception)
                                : double_to_script(realm, number.dblVal, exception);
}

// The elements lie in the same order on both sides.
JSValueRef array_to_script(Realm& realm, SAFEARRAY* array, JSValueRef* exception) {
  JSContextRef ctx = realm.context();
  const UINT dimensions = SafeArrayGetDim(array);
  if (dimensions == 1 && array->vtElement == VT_UI1) {
    VARIANT value{};
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = array;
    return realm.values().to_script(value, exception);
  }
  if (stack_is_low()) return realm.errors().raise_out_of_stack(exception);
  JSObjectRef bounds = JSObjectMakeArray(ctx, 0, nullptr, exception);
  JSObjectRef elements = JSObjectMakeArray(ctx, 0, nullptr, exception);
  if (*exception) return nullptr;
  std::size_t total = dimensions > 0 ? 1 : 0;
  for (UINT i = 0; i < dimensions; ++i) {
    const ULONG count = array->rgsabound[dimensions - 1 - i].cElements;
    total *= count;
    JSObjectSetPropertyAtIndex(ctx, bounds, i, JSValueMakeNumber(ctx, static_cast<double>(count) - 1), nullptr);
  }
  const auto* at = static_cast<const BYTE*>(array->pvData);
  for (std::size_t i = 0; i < total; ++i, at += array->cbElements) {
    VARIANT element{};
    if (array->vtElement == VT_VARIANT) {
      std::memcpy(static_cast<void*>(&element), at, sizeof element);
    } else {
      element.vt = array->vtElement;
      std::memcpy(&element.llVal, at, std::min<std::size_t>(array->cbElements, sizeof element.llVal));
    }
    JSValueRef value = to_script(realm, element, exception);
    if (!value) return nullptr;
    JSObjectSetPropertyAtIndex(ctx, elements, static_cast<unsigned>(i), value, exception);
    if (*exception) return nullptr;
  }
  return library_of(realm).array(bounds, elements, exception);
}

JSValueRef amount_to_script(Realm& realm, LONGLONG ten_thousandths, JSValueRef* exception) {
  JSValueRef digits = string_value(realm.context(), std::to_wstring(ten_thousandths));
  return library_of(realm).box(VT_CY, digits, exception);
}

}  // namespace

bool box_to_variant(Realm& realm, JSValueRef object, VARIANT* out, JSValueRef* exception) {
  if (!realm.prelude().speaks_vbscript()) return false;
  JSValueRef packed = library_of(realm).pack(object, exception);
  if (!packed) return true;
  if (!JSValueIsObject(realm.context(), packed)) return false;
  const RootedObject root(object_of(packed));
  Packed(realm, packed).to_variant(out, exception);
  return true;
}

bool to_variant(Realm& realm, JSValueRef value, VARIANT* out, JSValueRef* exception) {
  if (out->vt != VT_EMPTY) VariantClear(out);
  if (JSValueIsNumber(realm.context(), value)) {
    number_to_variant(JSValueToNumber(realm.context(), value, nullptr), out);
    return true;
  }
  return realm.values().to_variant(value, out, exception);
}

JSValueRef to_script(Realm& realm, const VARIANT& value, JSValueRef* exception) {
  if (value.vt & VT_BYREF) {
    CComVariant direct;
    const HRESULT hr = VariantCopyInd(&direct, &value);
    return SUCCEEDED(hr) ? to_script(realm, direct, exception) : realm.errors().raise(hr, {}, exception);
  }
  if (value.vt & VT_ARRAY) return array_to_script(realm, value.parray, exception);
  switch (value.vt) {
    case VT_I2:
      return JSValueMakeNumber(realm.context(), value.iVal);
    case VT_I4:
      return long_to_script(realm, value.lVal, exception);
    case VT_R8:
      return double_to_script(realm, value.dblVal, exception);
    case VT_R4:
      return boxed(realm, VT_R4, value.fltVal, exception);
    case VT_UI1:
      return boxed(realm, VT_UI1, value.bVal, exception);
    case VT_DATE:
      return boxed(realm, VT_DATE, value.date, exception);
    case VT_CY:
      return amount_to_script(realm, value.cyVal.int64, exception);
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return value.punkVal ? realm.values().to_script(value, exception) : library_of(realm).nothing();
    case VT_ERROR:
      return korlib::is_omitted(value) ? library_of(realm).missing() : long_to_script(realm, value.scode, exception);
    case VT_EMPTY:
    case VT_NULL:
    case VT_BSTR:
    case VT_BOOL:
      return realm.values().to_script(value, exception);
    default:
      return other_number_to_script(realm, value, exception);
  }
}

}  // namespace zelto::script::vbscript
