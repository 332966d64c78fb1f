#include "script/automation_object.h"

#include <algorithm>
#include <array>

#include "script/automation_member.h"
#include "script/callback.h"
#include "script/realm.h"

namespace zelto::script {
namespace {

// Names that the language itself asks any object for: a missing one of these is no mistake of the page's.
constexpr auto kLanguageNames = std::to_array<std::u16string_view>(
    {u"toString", u"toLocaleString", u"valueOf", u"constructor", u"hasOwnProperty", u"isPrototypeOf",
     u"propertyIsEnumerable", u"__proto__", u"__defineGetter__", u"__defineSetter__", u"__lookupGetter__",
     u"__lookupSetter__", u"then", u"toJSON"});

// More than pages call of one object, and few enough to look through.
constexpr std::size_t kMostFunctions = 32;

// What is asked for so often may be so in a loop.
constexpr unsigned kOften = 8;

bool is_language_name(std::u16string_view name) {
  return name.starts_with(u"Symbol.") || std::ranges::find(kLanguageNames, name) != kLanguageNames.end();
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

JSValueRef member_function(Realm& realm, JSObjectRef object, AutomationObject& held, DISPID id, JSStringRef name) {
  if (JSValueRef known = JSObjectGetPrivateProperty(realm.context(), object, name);
      known && JSValueIsObject(realm.context(), known)) {
    auto* const member = static_cast<AutomationMember*>(JSObjectGetPrivate(object_of(known)));
    member->bind(realm, held.dispatch(), id);
    held.remember_function(name, object_of(known), member);
    return known;
  }
  auto made =
      std::make_unique<AutomationMember>(realm, CallTarget{held.dispatch(), id, to_wide(JsString::view_of(name))});
  AutomationMember* const member = made.get();
  JSObjectRef function = realm.wrappers().make(realm.engine().classes().member, std::move(made));
  JSObjectSetPrivateProperty(realm.context(), object, name, function);
  held.add_member(function);
  held.remember_function(name, function, member);
  return function;
}

// Undefined when the object cannot be indexed by what it enumerates: for-in itself asks this way whether
// the name still exists.
JSValueRef item_of_key(Realm& realm, const CComPtr<IDispatch>& dispatch, JSStringRef name, JSValueRef* exception) {
  JSValueRef key = JSValueMakeString(realm.context(), name);
  JSValueRef failure = nullptr;
  JSValueRef value = realm.calls().call({dispatch, DISPID_VALUE, {}}, 1, &key, &failure);
  if (failure && is_unwinding()) *exception = failure;
  return value ? value : JSValueMakeUndefined(realm.context());
}

JSValueRef read_member(Realm& realm, JSObjectRef object, AutomationObject& held, JSStringRef name,
                       JSValueRef* exception) {
  const std::u16string_view text = JsString::view_of(name);
  const CComPtr<IDispatch> dispatch = held.dispatch();
  HRESULT hr = S_OK;
  const MemberName* known = held.names().find(dispatch.get(), text, &hr);
  if (!known) {
    if (FAILED(hr)) {
      realm.errors().raise(hr, to_wide(text), exception);
    } else if (held.has_key(text)) {
      return item_of_key(realm, dispatch, name, exception);
    } else if (!is_language_name(text)) {
      realm.missing().note(held.dispatch(), held.kind(), text);
    }
    return nullptr;  // as for any name that an object does not have: its prototype's, or undefined
  }
  const DISPID id = known->id;
  if (!known->is_function) {
    CComVariant value;
    hr = realm.calls().invoke(dispatch.get(), id, DISPATCH_PROPERTYGET, {}, &value);
    if (is_unwinding() || (FAILED(hr) && !is_refused(hr))) return realm.errors().raise(hr, to_wide(text), exception);
    if (SUCCEEDED(hr)) return realm.values().to_script(value, exception);
    held.names().mark_function(text);
  }
  return member_function(realm, object, held, id, name);
}

JSValueRef get_property(JSContextRef ctx, JSObjectRef object, JSStringRef name, JSValueRef* exception) {
  auto* const found = static_cast<AutomationObject*>(living_host_object(object));
  // A function does nothing before it is called.
  if (AutomationObject::Function* known = found ? found->function(name) : nullptr) {
    Realm& realm = *found->realm();
    realm.missing().pass();
    known->member->bind(realm, found->dispatch(), known->member->target().id);
    if (++known->uses % kOften == 0) {
      const Watchdog::Quiet quiet(found->engine().watchdog());
      realm.prelude().keep_method(object, name, known->member->direct(ctx, known->function, name));
    }
    return known->function;
  }
  const ShortText short_text(name);
  const std::u16string_view text = short_text.view();
  if (text.starts_with(u"Symbol.")) return nullptr;
  auto* held = living<AutomationObject>(ctx, object, exception);
  if (!held) return JSValueMakeUndefined(ctx);
  Realm& realm = *held->realm();
  if (!realm.calls().may_call(exception)) return JSValueMakeUndefined(ctx);
  LONG index = 0;
  JSValueRef value = nullptr;
  if (is_index(text, &index)) {
    JSValueRef argument = JSValueMakeNumber(ctx, index);
    value = realm.calls().call({held->dispatch(), DISPID_VALUE, to_wide(text)}, 1, &argument, exception);
  } else {
    value = read_member(realm, object, *held, name, exception);
  }
  return *exception ? JSValueMakeUndefined(ctx) : value;
}

bool set_property(JSContextRef ctx, JSObjectRef object, JSStringRef name, JSValueRef value, JSValueRef* exception) {
  auto* held = living<AutomationObject>(ctx, object, exception);
  if (!held) return true;
  Realm& realm = *held->realm();
  const ShortText short_text(name);
  const std::u16string_view text = short_text.view();
  if (text.starts_with(u"Symbol.") || !realm.calls().may_call(exception)) return true;
  const CComPtr<IDispatch> dispatch = held->dispatch();
  CallArguments arguments;
  DISPID id = DISPID_VALUE;
  HRESULT hr = S_OK;
  LONG index = 0;
  if (is_index(text, &index)) {
    arguments.set_index(index);
  } else if (const MemberName* known = held->names().find(dispatch.get(), text, &hr)) {
    id = known->id;
  } else if (SUCCEEDED(hr)) {
    realm.missing().note(held->dispatch(), held->kind(), text);
    realm.errors().raise_missing(exception);
    return true;
  }
  CComVariant converted;
  if (SUCCEEDED(hr)) {
    if (!realm.values().to_variant(value, &converted, exception)) return true;
    hr = realm.calls().put(dispatch.get(), id, arguments, converted);
  }
  if (FAILED(hr) || is_unwinding()) realm.errors().raise(hr, to_wide(text), exception);
  return true;
}

JSValueRef call_object(JSContextRef ctx, JSObjectRef object, JSObjectRef, std::size_t count, const JSValueRef* values,
                       JSValueRef* exception) {
  auto* held = living<AutomationObject>(ctx, object, exception);
  if (!held) return JSValueMakeUndefined(ctx);
  const CallTarget target{held->dispatch(), DISPID_VALUE, {}};
  ObjectCalls& calls = held->realm()->calls();
  if (count > 0) return calls.call(target, count, values, exception);
  // rs.Fields() is the object that rs.Fields is, where that gives nothing without arguments.
  return calls.call_bare(target, object, exception);
}

JSValueRef convert_object(JSContextRef ctx, JSObjectRef object, JSType, JSValueRef* exception) {
  auto* held = living<AutomationObject>(ctx, object, exception);
  if (!held) return nullptr;
  const CComPtr<IDispatch> dispatch = held->dispatch();
  JSValueRef value = held->realm()->calls().default_value(dispatch.get(), exception);
  if (*exception) return nullptr;
  if (!value) return string_value(ctx, L"[object Object]");
  if (!JSValueIsObject(ctx, value)) return value;
  return to_string_value(ctx, value, exception);
}

JSValueRef object_to_string(JSContextRef ctx, JSObjectRef, JSObjectRef self, std::size_t, const JSValueRef*,
                            JSValueRef* exception) {
  JSValueRef text = to_string_value(ctx, self, exception);
  return text ? text : JSValueMakeUndefined(ctx);
}

JSValueRef object_value_of(JSContextRef ctx, JSObjectRef, JSObjectRef self, std::size_t, const JSValueRef*,
                           JSValueRef* exception) {
  Realm* realm = Engine::realm_of(ctx);
  if (!realm || !realm->engine().classes().is_automation_object(ctx, self)) return self;
  JSValueRef value = convert_object(ctx, self, kJSTypeNumber, exception);
  return value ? value : JSValueMakeUndefined(ctx);
}

// What finds an item in its collection: the name of an object that has one, as fields and parameters have, or the item
// itself, as text.
CComVariant key_of(Realm& realm, const CComVariant& item) {
  if (item.vt != VT_DISPATCH || !item.pdispVal) return item;
  const CComPtr<IDispatch> object(item.pdispVal);
  std::wstring text = L"Name";
  LPOLESTR name = text.data();
  DISPID id = DISPID_UNKNOWN;
  CComVariant found;
  if (FAILED(object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_SYSTEM_DEFAULT, &id))) return item;
  const HRESULT hr = realm.calls().invoke(object.get(), id, DISPATCH_PROPERTYGET, {}, &found);
  return SUCCEEDED(hr) && found.vt == VT_BSTR ? found : item;
}

// for-in goes through what the collection enumerates.
void get_property_names(JSContextRef ctx, JSObjectRef object, JSPropertyNameAccumulatorRef names) {
  auto* held = static_cast<AutomationObject*>(living_host_object(object));
  if (!held) return;
  Realm& realm = *held->realm();
  std::vector<CComVariant> items;
  const CComPtr<IDispatch> dispatch = held->dispatch();
  JSValueRef refused = nullptr;
  if (!realm.calls().may_call(&refused) || FAILED(realm.calls().collect_items(dispatch.get(), &items))) return;
  for (const CComVariant& item : items) {
    JSValueRef exception = nullptr;
    JSValueRef value = realm.values().to_script(key_of(realm, item), &exception);
    const JsString text(value ? JSValueToStringCopy(ctx, value, &exception) : nullptr);
    if (!text.get()) continue;
    held->add_key(std::u16string(text.view()));
    JSPropertyNameAccumulatorAddName(names, text.get());
  }
}

}  // namespace

AutomationObject::AutomationObject(Realm& realm, CComPtr<IUnknown> identity, CComPtr<IDispatch> dispatch)
    : HostObject(realm), identity_(std::move(identity)), dispatch_(std::move(dispatch)) {}

AutomationObject::~AutomationObject() {
  if (realm()) realm()->wrappers().forget(this);
  AutomationObject::release();
}

void AutomationObject::bind(Realm& realm, CComPtr<IUnknown> identity, CComPtr<IDispatch> dispatch) {
  begin_again(realm);
  identity_ = std::move(identity);
  dispatch_ = std::move(dispatch);
  keys_.clear();
  kind_.clear();
  for (Function& one : functions_) one.uses = 0;
  if (class_ == *reinterpret_cast<const void* const*>(dispatch_.get())) return;
  functions_.clear();
  class_names_ = nullptr;
  own_names_.reset();
}

// The engine compares two of its strings without making a copy of either.
AutomationObject::Function* AutomationObject::function(JSStringRef name) {
  if (functions_.empty()) return nullptr;
  const std::size_t length = JSStringGetLength(name);
  const auto found = std::ranges::find_if(
      functions_, [&](const Function& one) { return one.length == length && JSStringIsEqual(one.name.get(), name); });
  return found == functions_.end() ? nullptr : &*found;
}

// With a copy of the name: the engine's own may be one that it has in a table of such strings, and whoever is the last
// to release it outside of the engine, as here later, leaves it there for the next use of that name.
void AutomationObject::remember_function(JSStringRef name, JSObjectRef function, AutomationMember* member) {
  if (functions_.size() >= kMostFunctions) return;
  const ShortText text(name);
  functions_.push_back({JsString(text.view()), JSStringGetLength(name), function, member, 0});
}

void AutomationObject::add_member(JSObjectRef member) {
  if (kept_) members_.emplace_back(member);
}

// A name in each of its letter cases has a function of its own, and visitors may choose some.
bool AutomationObject::are_members_kept() const {
  constexpr std::size_t kMostMembers = 400;
  return members_.size() <= kMostMembers &&
         std::ranges::all_of(members_, [](const Structure& member) { return member.is_kept(); });
}

void AutomationObject::release() {
  if (weak_) JSWeakRelease(engine().group(), weak_);
  weak_ = nullptr;
  identity_.reset();
  dispatch_.reset();
}

MemberNames& AutomationObject::names() {
  if (!class_names_ && !own_names_) {
    class_names_ = engine().members().of(dispatch_.get());
    class_ = class_names_ ? *reinterpret_cast<const void* const*>(dispatch_.get()) : nullptr;
    if (!class_names_) own_names_ = std::make_unique<MemberNames>(false);
  }
  return class_names_ ? *class_names_ : *own_names_;
}

JSClassRef make_object_class() {
  static const JSStaticFunction functions[] = {
      {"toString", callback<object_to_string>, kJSPropertyAttributeDontEnum},
      {"valueOf", callback<object_value_of>, kJSPropertyAttributeDontEnum},
      {nullptr, nullptr, 0},
  };
  JSClassDefinition definition = host_class("Object");
  definition.staticFunctions = functions;
  definition.getProperty = callback<get_property>;
  definition.setProperty = callback<set_property>;
  definition.getPropertyNames = callback<get_property_names>;
  definition.callAsFunction = callback<call_object>;
  definition.convertToType = callback<convert_object>;
  return JSClassCreate(&definition);
}

}  // namespace zelto::script
