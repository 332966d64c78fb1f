#include "script/script_classes.h"

#include "script/errors.h"

namespace zelto::script {
namespace {

JSClassRef make_opaque_class() {
  JSClassDefinition definition = kJSClassDefinitionEmpty;
  definition.className = "Object";
  definition.finalize = finalize_held;
  return JSClassCreate(&definition);
}

}  // namespace

EngineState::Classes make_classes() {
  return {make_object_class(), make_member_class(), make_reference_class(), make_opaque_class(), make_helper_class()};
}

void raise_ended(JSContextRef ctx, JSValueRef* exception) {
  JSValueRef text = JSValueMakeString(ctx, JsString("The page that made this object has ended").get());
  JSObjectRef error = JSObjectMakeError(ctx, 1, &text, nullptr);
  JSValueRef number = JSValueMakeNumber(ctx, kDisconnected);
  JSObjectSetProperty(ctx, error, JsString("number").get(), number, kJSPropertyAttributeDontEnum, nullptr);
  *exception = error;
}

void finalize_held(JSObjectRef object) {
  if (auto* held = static_cast<Held*>(JSObjectGetPrivate(object))) held->engine().bury(held);
}

}  // namespace zelto::script
