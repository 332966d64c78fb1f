#include "script/values.h"

#include <cmath>
#include <limits>

#include "base/serial_date.h"
#include "script/array_values.h"
#include "script/automation_object.h"
#include "script/realm.h"
#include "script/text.h"
#include "script/vbscript/border.h"

namespace zelto::script {
namespace {

constexpr double kMillisecondsADay = 1000.0 * base::kSecondsPerDay;
constexpr LONGLONG kLargestExact = (1LL << 53) - 1;  // of the integers that a number tells apart

void number_to_variant(double number, VARIANT* out) {
  if (number >= std::numeric_limits<LONG>::min() && number <= std::numeric_limits<LONG>::max() &&
      number == std::trunc(number)) {
    out->vt = VT_I4;
    out->lVal = static_cast<LONG>(number);
  } else {
    out->vt = VT_R8;
    out->dblVal = number;
  }
}

// Local milliseconds since 1970 as a DATE, and back.
DATE to_date(double local) { return base::from_linear(local / kMillisecondsADay + base::kDaysTo1970); }

double from_date(DATE date) { return std::round((base::to_linear(date) - base::kDaysTo1970) * kMillisecondsADay); }

// The engine's Date takes local time in parts.
JSValueRef date_at(JSContextRef ctx, double local, JSValueRef* exception) {
  const double days = std::floor(local / kMillisecondsADay);
  JSValueRef parts[] = {JSValueMakeNumber(ctx, 1970),
                        JSValueMakeNumber(ctx, 0),
                        JSValueMakeNumber(ctx, 1 + days),
                        JSValueMakeNumber(ctx, 0),
                        JSValueMakeNumber(ctx, 0),
                        JSValueMakeNumber(ctx, 0),
                        JSValueMakeNumber(ctx, local - days * kMillisecondsADay)};
  return JSObjectMakeDate(ctx, 7, parts, exception);
}

// The engine tells whole minutes only of what its clock is off by. Before 1972 there were zones with seconds.
double with_seconds(JSContextRef ctx, double local, double utc) {
  constexpr double kWholeMinutesSince = 2 * 365 * kMillisecondsADay;
  if (utc >= kWholeMinutesSince) return local;
  JSValueRef exception = nullptr;
  JSValueRef back = date_at(ctx, local, &exception);
  const double missing = back ? utc - JSValueToNumber(ctx, back, &exception) : 0;
  return !exception && std::abs(missing) < 60000 ? local + missing : local;
}

}  // namespace

bool Values::date_to_variant(JSObjectRef date, VARIANT* out, JSValueRef* exception) {
  const double utc = JSValueToNumber(context_, date, exception);
  JSValueRef get_offset = property(context_, date, "getTimezoneOffset");
  if (*exception || !std::isfinite(utc) || !JSValueIsObject(context_, get_offset)) {
    if (!*exception) errors_.raise_type_error(L"An invalid date has no value outside of the script", exception);
    return false;
  }
  JSValueRef offset = JSObjectCallAsFunction(context_, object_of(get_offset), date, 0, nullptr, exception);
  if (*exception) return false;
  const double local = utc - JSValueToNumber(context_, offset, exception) * 60000;
  if (*exception) return false;
  out->vt = VT_DATE;
  out->date = to_date(with_seconds(context_, local, utc));
  return true;
}

bool Values::bigint_to_variant(JSValueRef value, VARIANT* out, JSValueRef* exception) {
  const std::int64_t number = JSValueToInt64(context_, value, exception);
  if (*exception) return false;
  if (JSValueCompareInt64(context_, value, number, exception) != kJSRelationConditionEqual)
    return errors_.raise(DISP_E_OVERFLOW, {}, exception);
  out->vt = VT_I8;
  out->llVal = number;
  return true;
}

bool Values::string_to_variant(JSValueRef value, VARIANT* out, JSValueRef* exception) {
  const JsString text(JSValueToStringCopy(context_, value, exception));
  if (!text.get()) return false;
  BSTR made = new_bstr(text.get());
  if (made) texts_.note(value, made);
  return give_text(made, out, exception);
}

bool Values::give_text(BSTR owned, VARIANT* out, JSValueRef* exception) {
  if (!owned) return errors_.raise(E_OUTOFMEMORY, {}, exception);
  out->bstrVal = owned;
  out->vt = VT_BSTR;
  return true;
}

bool Values::object_to_variant(JSObjectRef object, VARIANT* out, JSValueRef* exception) {
  if (classes_.is_automation_object(context_, object)) {
    auto* held = living<AutomationObject>(context_, object, exception);
    if (held) CComVariant(held->dispatch().get()).detach_to(out);
    return held != nullptr;
  }
  if (JSValueIsObjectOfClass(context_, object, classes_.opaque)) {
    auto* held = living<OpaqueObject>(context_, object, exception);
    if (held) CComVariant(held->object().get()).detach_to(out);
    return held != nullptr;
  }
  if (JSValueIsObjectOfClass(context_, object, classes_.member)) {
    // A member that was not called stands for what it gives.
    JSValueRef value = JSObjectCallAsFunction(context_, object, nullptr, 0, nullptr, exception);
    return value && !*exception && to_variant(value, out, exception);
  }
  if (JSValueIsArray(context_, object)) return array_to_variant(*this, object, out, exception);
  if (JSValueIsDate(context_, object)) return date_to_variant(object, out, exception);
  switch (JSValueGetTypedArrayType(context_, object, nullptr)) {
    case kJSTypedArrayTypeNone:
      break;
    case kJSTypedArrayTypeArrayBuffer:
    case kJSTypedArrayTypeUint8Array:
    case kJSTypedArrayTypeUint8ClampedArray:
    case kJSTypedArrayTypeInt8Array:
      return bytes_to_variant(*this, object, out, exception);
    default:
      return array_to_variant(*this, object, out, exception);
  }
  if (Realm* realm = Engine::realm_of(context_); realm && vbscript::box_to_variant(*realm, object, out, exception)) {
    return !*exception;
  }
  out->vt = VT_DISPATCH;
  out->pdispVal = wrappers_.to_automation(object).detach();
  return true;
}

// Numbers of every width, and what is left: all have a form as VT_R8.
JSValueRef Values::number_to_script(const VARIANT& value, JSValueRef* exception) {
  CComVariant number;
  const HRESULT hr = VariantChangeType(&number, &value, 0, VT_R8);
  return SUCCEEDED(hr) ? JSValueMakeNumber(context_, number.dblVal) : errors_.raise(hr, {}, exception);
}

// What a value points to.
JSValueRef Values::referenced_to_script(const VARIANT& value, JSValueRef* exception) {
  if (!value.byref) return JSValueMakeUndefined(context_);
  if (value.vt == (VT_BYREF | VT_VARIANT)) return to_script(*value.pvarVal, exception);
  VARIANT direct{};
  direct.vt = static_cast<VARTYPE>(value.vt & ~VT_BYREF);
  if (direct.vt & VT_ARRAY) {
    direct.parray = *value.pparray;
    return to_script(direct, exception);
  }
  CComVariant copy;
  const HRESULT hr = VariantCopyInd(&copy, &value);
  return SUCCEEDED(hr) ? to_script(copy, exception) : errors_.raise(hr, {}, exception);
}

bool Values::to_variant(JSValueRef value, VARIANT* out, JSValueRef* exception) {
  if (out->vt != VT_EMPTY) VariantClear(out);
  if (BSTR known = texts_.find(value)) return give_text(korlib::new_bstr(korlib::view_of(known)), out, exception);
  switch (JSValueGetType(context_, value)) {
    case kJSTypeUndefined:
      return true;
    case kJSTypeNull:
      out->vt = VT_NULL;
      return true;
    case kJSTypeBoolean:
      out->vt = VT_BOOL;
      out->boolVal = JSValueToBoolean(context_, value) ? VARIANT_TRUE : VARIANT_FALSE;
      return true;
    case kJSTypeNumber:
      number_to_variant(JSValueToNumber(context_, value, nullptr), out);
      return true;
    case kJSTypeString:
      return string_to_variant(value, out, exception);
    case kJSTypeObject:
      return object_to_variant(object_of(value), out, exception);
    case kJSTypeBigInt:
      return bigint_to_variant(value, out, exception);
    case kJSTypeSymbol:
      break;
  }
  return errors_.raise_type_error(L"A symbol has no value outside of the script", exception);
}

JSValueRef Values::to_script(const VARIANT& value, JSValueRef* exception) {
  if (value.vt & VT_BYREF) return referenced_to_script(value, exception);
  if (value.vt & VT_ARRAY) return array_to_script(*this, value.parray, exception);
  switch (value.vt) {
    case VT_EMPTY:
      return JSValueMakeUndefined(context_);
    case VT_NULL:
      return JSValueMakeNull(context_);
    case VT_BOOL:
      return JSValueMakeBoolean(context_, value.boolVal != VARIANT_FALSE);
    case VT_I4:
      return JSValueMakeNumber(context_, value.lVal);
    case VT_I8:
      if (value.llVal > kLargestExact || value.llVal < -kLargestExact) {
        return JSBigIntCreateWithInt64(context_, value.llVal, exception);
      }
      return JSValueMakeNumber(context_, static_cast<double>(value.llVal));
    case VT_UI8:
      if (value.ullVal > ULONGLONG{kLargestExact}) return JSBigIntCreateWithUInt64(context_, value.ullVal, exception);
      return JSValueMakeNumber(context_, static_cast<double>(value.ullVal));
    case VT_R8:
      return JSValueMakeNumber(context_, value.dblVal);
    case VT_BSTR:
      return string_value(context_, korlib::view_of(value.bstrVal));
    case VT_DATE:
      return date_at(context_, from_date(value.date), exception);
    case VT_DISPATCH:
      return wrappers_.to_script(value.pdispVal);
    case VT_UNKNOWN:
      return wrappers_.to_script(value.punkVal);
    case VT_ERROR:
      if (value.scode == DISP_E_PARAMNOTFOUND) return JSValueMakeUndefined(context_);
      return JSValueMakeNumber(context_, value.scode);
    default:
      return number_to_script(value, exception);
  }
}

}  // namespace zelto::script
