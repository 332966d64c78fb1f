// `o(args)` on the left of an assignment: its property `v` is read by compound assignments and written by
// all of them.
#include "script/arguments.h"
#include "script/rooted_values.h"
#include "script/script_classes.h"

namespace zelto::script {
namespace {

bool is_value(JSStringRef name) { return JsString::view_of(name) == u"v"; }

JSValueRef get_property(JSContextRef ctx, JSObjectRef object, JSStringRef name, JSValueRef* exception) {
  const RootedObject root(object);  // the call may collect a reference that it was the last to need
  auto* held = held_by<Reference>(object);
  if (!held || !is_value(name)) return nullptr;
  RealmState& realm = *held->realm();
  if (!realm.may_call(exception)) return JSValueMakeUndefined(ctx);
  CComVariant result;
  std::vector<CComVariant>& reversed = held->reversed();
  DISPPARAMS params{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  const HRESULT hr = realm.invoke(held->dispatch().get(), held->id(), kCall, &params, &result);
  if (SUCCEEDED(hr) && !is_unwinding()) return realm.to_script(result, exception);
  realm.raise(hr, held->name(), exception);
  return JSValueMakeUndefined(ctx);
}

bool set_property(JSContextRef, JSObjectRef object, JSStringRef name, JSValueRef value, JSValueRef* exception) {
  const RootedObject root(object);
  auto* held = held_by<Reference>(object);
  if (!held || !is_value(name)) return false;
  RealmState& realm = *held->realm();
  CComVariant converted;
  if (!realm.may_call(exception) || !realm.to_variant(value, &converted, exception)) return true;
  const HRESULT hr = put_member(realm, held->dispatch().get(), held->id(), held->reversed(), converted);
  if (FAILED(hr) || is_unwinding()) realm.raise(hr, held->name(), exception);
  return true;
}

}  // namespace

JSClassRef make_reference_class() {
  JSClassDefinition definition = kJSClassDefinitionEmpty;
  definition.className = "Reference";
  definition.finalize = finalize_held;
  definition.getProperty = get_property;
  definition.setProperty = set_property;
  return JSClassCreate(&definition);
}

}  // namespace zelto::script
