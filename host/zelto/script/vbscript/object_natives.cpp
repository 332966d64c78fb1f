// Members of automation objects, as VBScript calls them.
#include <cstring>

#include "script/automation_object.h"
#include "script/callback.h"
#include "script/object_type.h"
#include "script/realm.h"
#include "script/small_integer.h"
#include "script/vbscript/border.h"
#include "script/vbscript/natives.h"
#include "script/vbscript/variable_arguments.h"

namespace zelto::script::vbscript {
namespace {

constexpr WORD kCall = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

// What a function is called with.
struct Given {
  std::size_t count;
  const JSValueRef* values;
  JSValueRef operator[](std::size_t i) const { return values[i]; }
  Given from(std::size_t first) const {
    return count > first ? Given{count - first, values + first} : Given{0, nullptr};
  }
};

// Every function starts with the realm whose code calls it, and with as many arguments as it needs.
template <JSValueRef (*function)(Realm&, const Given&, JSValueRef*), std::size_t needed>
JSValueRef entry(JSContextRef ctx, JSObjectRef, JSObjectRef, std::size_t count, const JSValueRef* values,
                 JSValueRef* exception) {
  Realm* realm = Engine::realm_of(ctx);
  JSValueRef value = realm && count >= needed ? function(*realm, {count, values}, exception) : nullptr;
  return value ? value : JSValueMakeUndefined(ctx);
}

AutomationObject* object_behind(Realm& realm, JSValueRef value, JSValueRef* exception) {
  if (realm.engine().classes().is_automation_object(realm.context(), value))
    return living<AutomationObject>(realm.context(), object_of(value), exception);
  realm.errors().raise(DISP_E_TYPEMISMATCH, {}, exception);
  return nullptr;
}

struct Target : CallTarget {
  MemberNames* names = nullptr;  // that the member is one of; null for the default member
  bool is_function = false;      // known not to be readable without arguments
};

// The member that a call is for: by its name, or the default member where that is undefined. False with an exception.
bool find_target(Realm& realm, const Given& given, Target* target, JSValueRef* exception) {
  AutomationObject* held = object_behind(realm, given[0], exception);
  if (!held || !realm.calls().may_call(exception)) return false;
  target->object = held->dispatch();
  if (!JSValueIsString(realm.context(), given[1])) return true;
  const JsString name(JSValueToStringCopy(realm.context(), given[1], exception));
  if (!name.get()) return false;
  const ShortText text(name.get());
  HRESULT hr = S_OK;
  const MemberName* known = held->names().find(target->object.get(), text.view(), &hr);
  if (!known && FAILED(hr)) return realm.errors().raise(hr, to_wide(text.view()), exception);
  if (!known) {
    realm.missing().note(held->dispatch(), held->kind(), text.view());
    realm.errors().raise_missing(exception);
    return false;
  }
  target->id = known->id;
  target->names = &held->names();
  target->is_function = known->is_function;
  target->name = to_wide(text.view());
  return true;
}

// Inline, as call_target() and noted() are: two natives have them, and calls of objects are what pages do most.
[[gnu::always_inline]] inline bool convert(Realm& realm, const Given& given, CallArguments* arguments,
                                           JSValueRef* exception) {
  arguments->resize(given.count);
  for (std::size_t i = 0; i < given.count; ++i) {
    if (!to_variant(realm, given[i], &arguments->at(i), exception)) return false;
  }
  return true;
}

// `rs.Fields("id")`: a property that is read without arguments and is an object is asked for its default member. False
// for every other member, which takes the arguments itself.
bool find_indexed(Realm& realm, const Target& target, CComPtr<IDispatch>* indexed) {
  if (!target.names || target.is_function) return false;
  CComVariant value;
  const HRESULT hr = realm.calls().invoke(target.object.get(), target.id, DISPATCH_PROPERTYGET, {}, &value);
  if (is_refused(hr)) target.names->mark_function(korlib::to_utf16(target.name));
  if (FAILED(hr)) SetErrorInfo(0, nullptr);
  if (FAILED(hr) || value.vt != VT_DISPATCH || !value.pdispVal) return false;
  *indexed = value.pdispVal;
  return true;
}

[[gnu::always_inline]] inline JSValueRef call_target(Realm& realm, const Target& target, CallArguments& arguments,
                                                     JSValueRef* exception) {
  CComVariant result;
  CComPtr<IDispatch> indexed;
  const bool is_indexed = !arguments.empty() && find_indexed(realm, target, &indexed);
  const HRESULT hr = realm.calls().invoke(is_indexed ? indexed.get() : target.object.get(),
                                          is_indexed ? DISPID_VALUE : target.id, kCall, arguments.params(), &result);
  return realm.errors().check(hr, target.name, exception) ? to_script(realm, result, exception) : nullptr;
}

// What Server creates is of the kind that it was asked for by.
[[gnu::always_inline]] inline JSValueRef noted(Realm& realm, const Target& target, JSValueRef value,
                                               const Given& arguments) {
  if (value && target.object.get() == realm.globals().server() && arguments.count == 1) {
    realm.calls().note_kind(value, arguments[0]);
  }
  return value;
}

// invoke(object, name, …arguments)
JSValueRef invoke(Realm& realm, const Given& given, JSValueRef* exception) {
  Target target;
  CallArguments arguments;
  if (!find_target(realm, given, &target, exception) || !convert(realm, given.from(2), &arguments, exception)) {
    return nullptr;
  }
  return noted(realm, target, call_target(realm, target, arguments, exception), given.from(2));
}

// ask(object, name, places, answers, …arguments): the same, with arguments that are variables. Their places are bits,
// and what is assigned to them is put into the array `answers`.
JSValueRef ask(Realm& realm, const Given& given, JSValueRef* exception) {
  Target target;
  CallArguments arguments;
  const Given own = given.from(4);
  if (!find_target(realm, given, &target, exception) || !convert(realm, own, &arguments, exception)) return nullptr;
  const auto places = static_cast<unsigned>(small_integer(realm.context(), given[2]).value_or(0));
  const VariableArguments variables(arguments, own.count, places);
  JSValueRef value = call_target(realm, target, arguments, exception);
  if (!value || !variables.give_back(realm, object_of(given[3]), exception)) return nullptr;
  return noted(realm, target, value, own);
}

// put(object, name, value, …arguments): what kind of value it is tells how it is put.
JSValueRef put(Realm& realm, const Given& given, JSValueRef* exception) {
  Target target;
  CallArguments arguments;
  CComVariant value;
  if (!find_target(realm, given, &target, exception) || !to_variant(realm, given[2], &value, exception) ||
      !convert(realm, given.from(3), &arguments, exception)) {
    return nullptr;
  }
  CComPtr<IDispatch> indexed;
  const bool is_indexed = !arguments.empty() && find_indexed(realm, target, &indexed);
  const HRESULT hr = realm.calls().put(is_indexed ? indexed.get() : target.object.get(),
                                       is_indexed ? DISPID_VALUE : target.id, arguments, value);
  realm.errors().check(hr, target.name, exception);
  return nullptr;
}

// items(object): what it enumerates, as an array.
JSValueRef items(Realm& realm, const Given& given, JSValueRef* exception) {
  AutomationObject* held = object_behind(realm, given[0], exception);
  if (!held || !realm.calls().may_call(exception)) return nullptr;
  const CComPtr<IDispatch> dispatch = held->dispatch();
  std::vector<CComVariant> found;
  const HRESULT hr = realm.calls().collect_items(dispatch.get(), &found);
  if (!realm.errors().check(is_refused(hr) ? DISP_E_MEMBERNOTFOUND : hr, L"_NewEnum", exception)) return nullptr;
  JSObjectRef array = JSObjectMakeArray(realm.context(), 0, nullptr, exception);
  for (std::size_t i = 0; array && i < found.size(); ++i) {
    JSValueRef value = to_script(realm, found[i], exception);
    if (!value) return nullptr;
    JSObjectSetPropertyAtIndex(realm.context(), array, static_cast<unsigned>(i), value, exception);
  }
  return array;
}

HRESULT read_default(Realm& realm, const AutomationObject& held, VARIANT* value) {
  const HRESULT hr = realm.calls().read_default(held.dispatch().get(), value);
  return hr == S_FALSE ? DISP_E_TYPEMISMATCH : hr;
}

JSValueRef default_value(Realm& realm, const Given& given, JSValueRef* exception) {
  AutomationObject* held = object_behind(realm, given[0], exception);
  if (!held || !realm.calls().may_call(exception)) return nullptr;
  CComVariant value;
  const HRESULT hr = read_default(realm, *held, &value);
  if (!realm.errors().check(is_refused(hr) ? DISP_E_MEMBERNOTFOUND : hr, {}, exception)) return nullptr;
  return to_script(realm, value, exception);
}

JSValueRef has_default(Realm& realm, const Given& given, JSValueRef* exception) {
  AutomationObject* held = object_behind(realm, given[0], exception);
  if (!held || !realm.calls().may_call(exception)) return nullptr;
  CComVariant value;
  const HRESULT hr = read_default(realm, *held, &value);
  SetErrorInfo(0, nullptr);
  return JSValueMakeBoolean(realm.context(), SUCCEEDED(hr));
}

// What TypeName answers.
JSValueRef kind_name(Realm& realm, const Given& given, JSValueRef* exception) {
  AutomationObject* held = object_behind(realm, given[0], exception);
  if (!held) return nullptr;
  const std::wstring name = kind_of(held->dispatch().get());
  return string_value(realm.context(), name.empty() ? L"Object" : std::wstring_view(name));
}

// check(): raises when the page has ended.
JSValueRef check(Realm& realm, const Given&, JSValueRef* exception) {
  realm.calls().may_call(exception);
  return nullptr;
}

}  // namespace

void add_object_natives(JSContextRef context, JSObjectRef target) {
  for (const Native& native : {Native{"invoke", callback<entry<invoke, 2>>},
                               {"ask", callback<entry<ask, 4>>},
                               {"put", callback<entry<put, 3>>},
                               {"items", callback<entry<items, 1>>},
                               {"default_value", callback<entry<default_value, 1>>},
                               {"has_default", callback<entry<has_default, 1>>},
                               {"kind_name", callback<entry<kind_name, 1>>},
                               {"check", callback<entry<check, 0>>}}) {
    add_native(context, target, native);
  }
}

}  // namespace zelto::script::vbscript
