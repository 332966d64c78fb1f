// Single values across the border; arrays are in array_values.cpp.
#include <cmath>
#include <limits>

#include "script/arguments.h"
#include "script/array_values.h"
#include "script/errors.h"
#include "script/realm_state.h"
#include "script/script_classes.h"
#include "script/script_object.h"

namespace zelto::script {
namespace {

constexpr double kMillisecondsADay = 86400000;
constexpr double kDaysToEpoch = 25569;               // from 1899-12-30 to 1970-01-01
constexpr LONGLONG kLargestExact = (1LL << 53) - 1;  // of the integers that a number tells apart

JSObjectRef object_of(JSValueRef value) { return const_cast<JSObjectRef>(value); }

JSValueRef string_value(JSContextRef ctx, BSTR text) {
  return JSValueMakeString(ctx, JsString(korlib::view_of(text)).get());
}

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

// Local milliseconds since 1970 as a DATE: before its zero day the fraction still counts forwards.
DATE to_date(double local) {
  const double days = local / kMillisecondsADay + kDaysToEpoch;
  if (days >= 0) return days;
  const double day = std::floor(days);
  const double fraction = days - day;
  return fraction == 0 ? day : day - fraction;
}

double from_date(DATE date) {
  const double day = std::trunc(date);
  const double days = date < 0 ? day + (day - date) : date;
  return std::round((days - kDaysToEpoch) * kMillisecondsADay);
}

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

bool date_to_variant(RealmState& realm, JSObjectRef date, VARIANT* out, JSValueRef* exception) {
  JSContextRef ctx = realm.context();
  const double utc = JSValueToNumber(ctx, date, exception);
  JSValueRef get_offset = realm.property(date, JsString("getTimezoneOffset"));
  if (*exception || !std::isfinite(utc) || !JSValueIsObject(ctx, get_offset)) {
    if (!*exception) realm.raise_type_error(L"An invalid date has no value outside of the script", exception);
    return false;
  }
  JSValueRef offset = JSObjectCallAsFunction(ctx, object_of(get_offset), date, 0, nullptr, exception);
  if (*exception) return false;
  const double local = utc - JSValueToNumber(ctx, offset, exception) * 60000;
  if (*exception) return false;
  out->vt = VT_DATE;
  out->date = to_date(with_seconds(ctx, local, utc));
  return true;
}

bool bigint_to_variant(RealmState& realm, JSValueRef value, VARIANT* out, JSValueRef* exception) {
  const std::int64_t number = JSValueToInt64(realm.context(), value, exception);
  if (*exception) return false;
  if (JSValueCompareInt64(realm.context(), value, number, exception) != kJSRelationConditionEqual) {
    realm.raise(DISP_E_OVERFLOW, {}, exception);
    return false;
  }
  out->vt = VT_I8;
  out->llVal = number;
  return true;
}

bool string_to_variant(RealmState& realm, JSValueRef value, VARIANT* out, JSValueRef* exception) {
  const JsString text(JSValueToStringCopy(realm.context(), value, exception));
  if (!text.get()) return false;
  out->bstrVal = new_bstr(text.view());
  if (!out->bstrVal) {
    realm.raise(E_OUTOFMEMORY, {}, exception);
    return false;
  }
  out->vt = VT_BSTR;
  return true;
}

// The private data of a host's object; null with an exception when its page has ended.
template <class Kind>
Kind* living(JSContextRef ctx, JSObjectRef object, JSValueRef* exception) {
  auto* held = held_by<Kind>(object);
  if (!held) raise_ended(ctx, exception);
  return held;
}

bool host_object_to_variant(RealmState& realm, JSObjectRef object, VARIANT* out, bool* is_host, JSValueRef* exception) {
  JSContextRef ctx = realm.context();
  const EngineState::Classes& classes = realm.engine().classes();
  *is_host = true;
  if (JSValueIsObjectOfClass(ctx, object, classes.object)) {
    auto* held = living<AutomationObject>(ctx, object, exception);
    if (!held) return false;
    out->vt = VT_DISPATCH;
    out->pdispVal = CComPtr<IDispatch>(held->dispatch()).detach();
  } else if (JSValueIsObjectOfClass(ctx, object, classes.opaque)) {
    auto* held = living<Opaque>(ctx, object, exception);
    if (!held) return false;
    out->vt = VT_UNKNOWN;
    out->punkVal = CComPtr<IUnknown>(held->object()).detach();
  } else if (JSValueIsObjectOfClass(ctx, object, classes.member)) {
    // A member that was not called stands for what it gives.
    JSValueRef value = JSObjectCallAsFunction(ctx, object, nullptr, 0, nullptr, exception);
    return value && !*exception && realm.to_variant(value, out, exception);
  } else {
    *is_host = false;
  }
  return true;
}

bool object_to_variant(RealmState& realm, JSObjectRef object, VARIANT* out, JSValueRef* exception) {
  JSContextRef ctx = realm.context();
  bool is_host = false;
  if (!host_object_to_variant(realm, object, out, &is_host, exception) || is_host) return !*exception;
  if (JSValueIsArray(ctx, object)) return array_to_variant(realm, object, out, exception);
  if (JSValueIsDate(ctx, object)) return date_to_variant(realm, object, out, exception);
  switch (JSValueGetTypedArrayType(ctx, object, nullptr)) {
    case kJSTypedArrayTypeNone:
      break;
    case kJSTypedArrayTypeArrayBuffer:
    case kJSTypedArrayTypeUint8Array:
    case kJSTypedArrayTypeUint8ClampedArray:
    case kJSTypedArrayTypeInt8Array:
      return bytes_to_variant(realm, object, out, exception);
    default:
      return array_to_variant(realm, object, out, exception);
  }
  out->vt = VT_DISPATCH;
  out->pdispVal = realm.unwrap(object).detach();
  return true;
}

JSValueRef object_to_script(RealmState& realm, IUnknown* unknown) {
  JSContextRef ctx = realm.context();
  if (!unknown) return JSValueMakeNull(ctx);
  ScriptObject* script_object = script_object_behind(unknown);
  if (script_object && script_object->is_own_thread() && script_object->realm() &&
      &script_object->realm()->engine() == &realm.engine()) {
    return script_object->object();
  }
  CComQIPtr<IDispatch> dispatch(unknown);
  if (dispatch) return realm.wrap(dispatch.get());
  return realm.make(realm.engine().classes().opaque, std::make_unique<Opaque>(realm, CComPtr<IUnknown>(unknown)));
}

// Numbers of every width, and what is left: all have a form as VT_R8.
JSValueRef number_to_script(RealmState& realm, const VARIANT& value, JSValueRef* exception) {
  CComVariant number;
  const HRESULT hr = VariantChangeType(&number, &value, 0, VT_R8);
  if (SUCCEEDED(hr)) return JSValueMakeNumber(realm.context(), number.dblVal);
  realm.raise(hr, {}, exception);
  return nullptr;
}

}  // namespace

bool RealmState::to_variant(JSValueRef value, VARIANT* out, JSValueRef* exception) {
  VariantClear(out);
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
      return string_to_variant(*this, value, out, exception);
    case kJSTypeObject:
      return object_to_variant(*this, object_of(value), out, exception);
    case kJSTypeBigInt:
      return bigint_to_variant(*this, value, out, exception);
    case kJSTypeSymbol:
      break;
  }
  raise_type_error(L"A symbol has no value outside of the script", exception);
  return false;
}

JSValueRef RealmState::to_script(const VARIANT& value, JSValueRef* exception) {
  if (value.vt & VT_BYREF) {
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
    if (SUCCEEDED(hr)) return to_script(copy, exception);
    raise(hr, {}, exception);
    return nullptr;
  }
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
      return string_value(context_, value.bstrVal);
    case VT_DATE:
      return date_at(context_, from_date(value.date), exception);
    case VT_DISPATCH:
      return object_to_script(*this, value.pdispVal);
    case VT_UNKNOWN:
      return object_to_script(*this, value.punkVal);
    case VT_ERROR:
      if (value.scode == DISP_E_PARAMNOTFOUND) return JSValueMakeUndefined(context_);
      return JSValueMakeNumber(context_, value.scode);
    default:
      return number_to_script(*this, value, exception);
  }
}

}  // namespace zelto::script
