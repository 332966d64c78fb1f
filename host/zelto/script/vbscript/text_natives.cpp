// Numbers, dates and locales in text, and the clock.
#include <korlib/combstr.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>
#include <limits>

#include "base/serial_date.h"
#include "script/callback.h"
#include "script/realm.h"
#include "script/vbscript/natives.h"
#include "text/locale.h"

namespace zelto::script::vbscript {
namespace {

template <JSValueRef (*function)(Realm&, const JSValueRef*, JSValueRef*), std::size_t needed>
JSValueRef entry(JSContextRef ctx, JSObjectRef, JSObjectRef, std::size_t count, const JSValueRef* values,
                 JSValueRef* exception) {
  Realm* realm = Engine::realm_of(ctx);
  JSValueRef value = realm && count >= needed ? function(*realm, values, exception) : nullptr;
  return value ? value : JSValueMakeUndefined(ctx);
}

LONG lcid_of(Realm& realm, JSValueRef value) {
  return static_cast<LONG>(JSValueToNumber(realm.context(), value, nullptr));
}

JSValueRef number_value(Realm& realm, double number) { return JSValueMakeNumber(realm.context(), number); }

// The text with the point for decimals, as numbers are read. The locale may write it with a comma.
std::wstring neutral_text(Realm& realm, JSValueRef text, JSValueRef lcid) {
  std::wstring made = text_of(realm.context(), text);
  const LocaleText* locale = LocaleText::of(lcid_of(realm, lcid));
  if (!locale || locale->number(L".") != L",") return made;
  for (wchar_t& c : made) c = c == L',' ? L'.' : c == L'.' ? L',' : c;
  return made;
}

// parse_number(text, lcid): undefined where it is none, Infinity where it is too large.
JSValueRef parse_number(Realm& realm, const JSValueRef* values, JSValueRef*) {
  CComVariant read(neutral_text(realm, values[0], values[1]));
  const HRESULT hr = read.change_type(VT_R8);
  if (hr == DISP_E_OVERFLOW) return number_value(realm, std::numeric_limits<double>::infinity());
  return SUCCEEDED(hr) ? number_value(realm, read.dblVal) : nullptr;
}

// The same, but in ten-thousandths, as text; fails where it is too large.
JSValueRef parse_currency(Realm& realm, const JSValueRef* values, JSValueRef* exception) {
  CComVariant read(neutral_text(realm, values[0], values[1]));
  const HRESULT hr = read.change_type(VT_CY);
  if (hr == DISP_E_OVERFLOW) return realm.errors().raise(hr, {}, exception);
  return SUCCEEDED(hr) ? string_value(realm.context(), std::to_wstring(read.cyVal.int64)) : nullptr;
}

// parse_date(text): the month comes first, whatever the locale.
JSValueRef parse_date(Realm& realm, const JSValueRef* values, JSValueRef*) {
  const std::wstring text = text_of(realm.context(), values[0]);
  CComVariant read(text);
  return SUCCEEDED(read.change_type(VT_DATE)) ? number_value(realm, read.date) : nullptr;
}

JSValueRef date_text(Realm& realm, const JSValueRef* values, JSValueRef* exception) {
  CComVariant date(JSValueToNumber(realm.context(), values[0], nullptr));
  date.vt = VT_DATE;
  const LocaleText* locale = LocaleText::of(lcid_of(realm, values[1]));
  if (locale) return string_value(realm.context(), locale->date(date.date));
  const HRESULT hr = date.change_type(VT_BSTR);
  if (FAILED(hr)) return realm.errors().raise(hr, {}, exception);
  return string_value(realm.context(), korlib::view_of(date.bstrVal));
}

// locale(): that of the page.
JSValueRef locale(Realm& realm, const JSValueRef*, JSValueRef*) {
  const IPageOutput* output = realm.globals().page_output();
  return number_value(realm, output ? output->locale() : kNeutralLocale);
}

JSValueRef decimal_mark(Realm& realm, const JSValueRef* values, JSValueRef*) {
  const LocaleText* locale = LocaleText::of(lcid_of(realm, values[0]));
  return string_value(realm.context(), locale ? locale->number(L".") : L".");
}

// locale_name(lcid): "de-DE"; the neutral one has its words in English. Nothing for a number that is none.
JSValueRef name_of_locale(Realm& realm, const JSValueRef* values, JSValueRef*) {
  return string_value(realm.context(), korlib::to_wide(locale_tag(lcid_of(realm, values[0]))));
}

JSValueRef number_of_locale(Realm& realm, const JSValueRef* values, JSValueRef*) {
  return number_value(realm, locale_number(to_utf8(text_of(realm.context(), values[0]))));
}

// Local time, to the second.
JSValueRef now(Realm& realm, const JSValueRef*, JSValueRef*) {
  return number_value(realm, base::local_date(std::time(nullptr)));
}

// The seconds of this day, and their fractions.
JSValueRef timer(Realm& realm, const JSValueRef*, JSValueRef*) {
  const auto since = std::chrono::system_clock::now().time_since_epoch();
  const double moment = std::chrono::duration<double>(since).count(), whole = std::floor(moment);
  const base::DayAndSecond local = base::nearest_second(base::local_date(static_cast<std::time_t>(whole)));
  return number_value(realm, local.second + (moment - whole));
}

// date_of(date): what a Date of the language is as a serial date.
JSValueRef date_of(Realm& realm, const JSValueRef* values, JSValueRef* exception) {
  CComVariant value;
  if (!realm.values().to_variant(values[0], &value, exception)) return nullptr;
  return value.vt == VT_DATE ? number_value(realm, value.date) : nullptr;
}

}  // namespace

void add_text_natives(JSContextRef context, JSObjectRef target) {
  for (const Native& native : {Native{"parse_number", callback<entry<parse_number, 2>>},
                               {"parse_currency", callback<entry<parse_currency, 2>>},
                               {"parse_date", callback<entry<parse_date, 2>>},
                               {"date_text", callback<entry<date_text, 2>>},
                               {"locale", callback<entry<locale, 0>>},
                               {"decimal_mark", callback<entry<decimal_mark, 1>>},
                               {"locale_name", callback<entry<name_of_locale, 1>>},
                               {"locale_number", callback<entry<number_of_locale, 1>>},
                               {"now", callback<entry<now, 0>>},
                               {"timer", callback<entry<timer, 0>>},
                               {"date_of", callback<entry<date_of, 1>>}}) {
    add_native(context, target, native);
  }
}

JSObjectRef make_natives(JSContextRef context) {
  JSObjectRef natives = JSObjectMake(context, nullptr, nullptr);
  add_object_natives(context, natives);
  add_text_natives(context, natives);
  add_code_natives(context, natives);
  return natives;
}

void add_native(JSContextRef context, JSObjectRef target, const Native& native) {
  const JsString name(native.name);
  JSObjectRef function = JSObjectMakeFunctionWithCallback(context, name.get(), native.function);
  JSObjectSetProperty(context, target, name.get(), function, kFixed, nullptr);
}

}  // namespace zelto::script::vbscript
