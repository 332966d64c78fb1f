// An automation object as the script sees it.
#include <algorithm>
#include <array>

#include "script/arguments.h"
#include "script/script_classes.h"

namespace zelto::script {
namespace {

// Names that the language itself asks any object for: that an object does not have them tells nobody anything.
constexpr auto kLanguageNames = std::to_array<std::u16string_view>(
    {u"toString", u"toLocaleString", u"valueOf", u"constructor", u"hasOwnProperty", u"isPrototypeOf",
     u"propertyIsEnumerable", u"__proto__", u"__defineGetter__", u"__defineSetter__", u"__lookupGetter__",
     u"__lookupSetter__", u"then", u"toJSON"});

bool is_language_name(std::u16string_view name) {
  return name.starts_with(u"Symbol.") ||
         std::find(kLanguageNames.begin(), kLanguageNames.end(), name) != kLanguageNames.end();
}

bool is_index(std::u16string_view name, LONG* index) {
  if (name.empty() || name.size() > 9) return false;
  *index = 0;
  for (const char16_t c : name) {
    if (c < u'0' || c > u'9') return false;
    *index = *index * 10 + (c - u'0');
  }
  return true;
}

JSValueRef member_function(RealmState& realm, JSObjectRef object, AutomationObject& held, DISPID id, JSStringRef name) {
  if (JSValueRef known = JSObjectGetPrivateProperty(realm.context(), object, name);
      known && JSValueIsObject(realm.context(), known)) {
    return known;
  }
  JSObjectRef member =
      realm.make(realm.engine().classes().member,
                 std::make_unique<AutomationMember>(realm, held.dispatch(), id, to_wide(JsString::view_of(name))));
  JSObjectSetPrivateProperty(realm.context(), object, name, member);
  return member;
}

// Undefined when the object cannot be indexed by what it enumerates: for-in itself asks this way whether
// the name still exists.
JSValueRef item_of_key(RealmState& realm, IDispatch* dispatch, JSStringRef name, JSValueRef* exception) {
  JSValueRef key = JSValueMakeString(realm.context(), name);
  JSValueRef failure = nullptr;
  JSValueRef value = call_member(realm, dispatch, DISPID_VALUE, {}, 1, &key, &failure);
  if (failure && is_unwinding()) *exception = failure;
  return value ? value : JSValueMakeUndefined(realm.context());
}

JSValueRef read_member(RealmState& realm, JSObjectRef object, AutomationObject& held, JSStringRef name,
                       JSValueRef* exception) {
  const std::u16string_view text = JsString::view_of(name);
  const CComPtr<IDispatch> dispatch = held.dispatch();
  HRESULT hr = S_OK;
  const MemberName* known = held.names().find(dispatch.get(), text, &hr);
  if (!known) {
    if (FAILED(hr)) {
      realm.raise(hr, to_wide(text), exception);
    } else if (held.has_key(text)) {
      return item_of_key(realm, dispatch.get(), name, exception);
    } else if (!is_language_name(text)) {
      realm.note_missing(held, text);
    }
    return nullptr;  // as for any name that an object does not have: its prototype's, or undefined
  }
  const DISPID id = known->id;
  if (!known->is_function) {
    CComVariant value;
    DISPPARAMS none{};
    hr = realm.invoke(dispatch.get(), id, DISPATCH_PROPERTYGET, &none, &value);
    if (is_unwinding() || (FAILED(hr) && !is_refused(hr))) {
      realm.raise(hr, to_wide(text), exception);
      return nullptr;
    }
    if (SUCCEEDED(hr)) return realm.to_script(value, exception);
    held.names().mark_function(text);
  }
  return member_function(realm, object, held, id, name);
}

JSValueRef get_property(JSContextRef ctx, JSObjectRef object, JSStringRef name, JSValueRef* exception) {
  const std::u16string_view text = JsString::view_of(name);
  if (text.starts_with(u"Symbol.")) return nullptr;
  auto* held = held_by<AutomationObject>(object);
  if (!held) {
    raise_ended(ctx, exception);
    return JSValueMakeUndefined(ctx);
  }
  RealmState& realm = *held->realm();
  if (!realm.may_call(exception)) return JSValueMakeUndefined(ctx);
  LONG index = 0;
  JSValueRef value = nullptr;
  if (is_index(text, &index)) {
    JSValueRef argument = JSValueMakeNumber(ctx, index);
    value = call_member(realm, held->dispatch().get(), DISPID_VALUE, to_wide(text), 1, &argument, exception);
  } else {
    value = read_member(realm, object, *held, name, exception);
  }
  return *exception ? JSValueMakeUndefined(ctx) : value;
}

bool set_property(JSContextRef ctx, JSObjectRef object, JSStringRef name, JSValueRef value, JSValueRef* exception) {
  auto* held = held_by<AutomationObject>(object);
  if (!held) {
    raise_ended(ctx, exception);
    return true;
  }
  RealmState& realm = *held->realm();
  const std::u16string_view text = JsString::view_of(name);
  if (text.starts_with(u"Symbol.") || !realm.may_call(exception)) return true;
  const CComPtr<IDispatch> dispatch = held->dispatch();
  std::vector<CComVariant> arguments;
  DISPID id = DISPID_VALUE;
  HRESULT hr = S_OK;
  LONG index = 0;
  if (is_index(text, &index)) {
    arguments.emplace_back(index);
  } else if (const MemberName* known = held->names().find(dispatch.get(), text, &hr)) {
    id = known->id;
  } else if (SUCCEEDED(hr)) {
    realm.note_missing(*held, text);
    realm.raise_missing(exception);
    return true;
  }
  CComVariant converted;
  if (SUCCEEDED(hr)) {
    if (!realm.to_variant(value, &converted, exception)) return true;
    hr = put_member(realm, dispatch.get(), id, arguments, converted);
  }
  if (FAILED(hr) || is_unwinding()) realm.raise(hr, to_wide(text), exception);
  return true;
}

JSValueRef call_object(JSContextRef ctx, JSObjectRef object, JSObjectRef, std::size_t count, const JSValueRef* values,
                       JSValueRef* exception) {
  auto* held = held_by<AutomationObject>(object);
  if (!held) {
    raise_ended(ctx, exception);
    return JSValueMakeUndefined(ctx);
  }
  const CComPtr<IDispatch> dispatch = held->dispatch();
  RealmState& realm = *held->realm();
  if (count > 0) return call_member(realm, dispatch.get(), DISPID_VALUE, {}, count, values, exception);
  // rs.Fields() is the object that rs.Fields is, where that gives nothing without arguments.
  return call_bare(realm, dispatch.get(), DISPID_VALUE, {}, object, exception);
}

JSValueRef convert_object(JSContextRef ctx, JSObjectRef object, JSType, JSValueRef* exception) {
  auto* held = held_by<AutomationObject>(object);
  if (!held) {
    raise_ended(ctx, exception);
    return nullptr;
  }
  const CComPtr<IDispatch> dispatch = held->dispatch();
  JSValueRef value = default_value(*held->realm(), dispatch.get(), exception);
  if (*exception) return nullptr;
  if (!value) return JSValueMakeString(ctx, JsString("[object Object]").get());
  if (!JSValueIsObject(ctx, value)) return value;
  const JsString text(JSValueToStringCopy(ctx, value, exception));
  return text.get() ? JSValueMakeString(ctx, text.get()) : nullptr;
}

JSValueRef object_to_string(JSContextRef ctx, JSObjectRef, JSObjectRef self, std::size_t, const JSValueRef*,
                            JSValueRef* exception) {
  const JsString text(JSValueToStringCopy(ctx, self, exception));
  return text.get() ? JSValueMakeString(ctx, text.get()) : JSValueMakeUndefined(ctx);
}

JSValueRef object_value_of(JSContextRef ctx, JSObjectRef, JSObjectRef self, std::size_t, const JSValueRef*,
                           JSValueRef* exception) {
  RealmState* realm = EngineState::current()->realm_of(ctx);
  if (!realm || !JSValueIsObjectOfClass(ctx, self, realm->engine().classes().object)) return self;
  JSValueRef value = convert_object(ctx, self, kJSTypeNumber, exception);
  return value ? value : JSValueMakeUndefined(ctx);
}

// for-in goes through what the collection enumerates, as text.
void get_property_names(JSContextRef ctx, JSObjectRef object, JSPropertyNameAccumulatorRef names) {
  auto* held = held_by<AutomationObject>(object);
  if (!held) return;
  std::vector<CComVariant> items;
  const CComPtr<IDispatch> dispatch = held->dispatch();
  JSValueRef refused = nullptr;
  if (!held->realm()->may_call(&refused) || FAILED(collect_items(*held->realm(), dispatch.get(), &items))) return;
  for (const CComVariant& item : items) {
    JSValueRef exception = nullptr;
    JSValueRef value = held->realm()->to_script(item, &exception);
    const JsString text(value ? JSValueToStringCopy(ctx, value, &exception) : nullptr);
    if (!text.get()) continue;
    held->add_key(std::u16string(text.view()));
    JSPropertyNameAccumulatorAddName(names, text.get());
  }
}

}  // namespace

JSClassRef make_object_class() {
  static const JSStaticFunction functions[] = {
      {"toString", object_to_string, kJSPropertyAttributeDontEnum},
      {"valueOf", object_value_of, kJSPropertyAttributeDontEnum},
      {nullptr, nullptr, 0},
  };
  JSClassDefinition definition = kJSClassDefinitionEmpty;
  definition.className = "Object";
  definition.staticFunctions = functions;
  definition.finalize = finalize_held;
  definition.getProperty = get_property;
  definition.setProperty = set_property;
  definition.getPropertyNames = get_property_names;
  definition.callAsFunction = call_object;
  definition.convertToType = convert_object;
  return JSClassCreate(&definition);
}

}  // namespace zelto::script
