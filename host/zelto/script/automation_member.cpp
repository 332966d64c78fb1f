#include "script/automation_member.h"

#include <boost/unordered/unordered_flat_map.hpp>

#include "script/callback.h"
#include "script/realm.h"
#include "script/rooted_values.h"

namespace zelto::script {
namespace {

// What each direct function calls, for those of the thread's engine. They have no place of their own for it.
thread_local boost::unordered_flat_map<JSObjectRef, AutomationMember*> t_called;

JSValueRef call(JSContextRef ctx, JSObjectRef function, JSObjectRef, std::size_t count, const JSValueRef* values,
                JSValueRef* exception) {
  const RootedObject root(function);
  auto* held = living<AutomationMember>(ctx, function, exception);
  if (!held) return JSValueMakeUndefined(ctx);
  return held->realm()->calls().call(held->target(), count, values, exception);
}

JSValueRef call_direct(JSContextRef ctx, JSObjectRef function, JSObjectRef, std::size_t count, const JSValueRef* values,
                       JSValueRef* exception) {
  const auto found = t_called.find(function);
  AutomationMember* const held = found == t_called.end() ? nullptr : found->second;
  if (!held || !held->realm()) {
    raise_ended(ctx, exception);
    return JSValueMakeUndefined(ctx);
  }
  const RootedObject root(held->function());
  return held->realm()->calls().call(held->target(), count, values, exception);
}

// In text and sums the member stands for what it gives without arguments.
JSValueRef convert(JSContextRef ctx, JSObjectRef function, JSType, JSValueRef* exception) {
  JSValueRef value = call(ctx, function, nullptr, 0, nullptr, exception);
  if (!value || *exception || !JSValueIsObject(ctx, value)) return value;
  return to_string_value(ctx, value, exception);
}

bool is_value(JSStringRef name) { return JsString::view_of(name) == u"v"; }

JSValueRef get_referenced(JSContextRef ctx, JSObjectRef object, JSStringRef name, JSValueRef* exception) {
  const RootedObject root(object);  // the call may collect a reference that it was the last to need
  auto* held = static_cast<AutomationMember*>(living_host_object(object));
  if (!held || !is_value(name)) return nullptr;
  ObjectCalls& calls = held->realm()->calls();
  JSValueRef value = calls.may_call(exception) ? calls.call(held->target(), held->arguments(), exception) : nullptr;
  return value || !*exception ? value : JSValueMakeUndefined(ctx);
}

bool set_referenced(JSContextRef, JSObjectRef object, JSStringRef name, JSValueRef value, JSValueRef* exception) {
  const RootedObject root(object);
  auto* held = static_cast<AutomationMember*>(living_host_object(object));
  if (!held || !is_value(name)) return false;
  Realm& realm = *held->realm();
  CComVariant converted;
  if (!realm.calls().may_call(exception) || !realm.values().to_variant(value, &converted, exception)) return true;
  const CallTarget& target = held->target();
  const HRESULT hr = realm.calls().put(target.object.get(), target.id, held->arguments(), converted);
  realm.errors().check(hr, target.name, exception);
  return true;
}

}  // namespace

// Members go some time after their functions, when another function may lie where the own one was.
AutomationMember::~AutomationMember() {
  const auto found = t_called.find(direct_);
  if (found != t_called.end() && found->second == this) t_called.erase(found);
}

JSObjectRef AutomationMember::direct(JSContextRef ctx, JSObjectRef function, JSStringRef name) {
  if (direct_) return direct_;
  JSObjectRef made = JSObjectMakeFunctionWithCallback(ctx, name, callback<call_direct>);
  if (!made || !JSObjectSetPrivateProperty(ctx, function, JsString("direct").get(), made)) return function;
  t_called[made] = this;
  function_ = function;
  return direct_ = made;
}

JSClassRef make_member_class() {
  JSClassDefinition definition = host_class("Function");
  definition.callAsFunction = callback<call>;
  definition.convertToType = callback<convert>;
  return JSClassCreate(&definition);
}

JSClassRef make_reference_class() {
  JSClassDefinition definition = host_class("Reference");
  definition.getProperty = callback<get_referenced>;
  definition.setProperty = callback<set_referenced>;
  return JSClassCreate(&definition);
}

}  // namespace zelto::script
