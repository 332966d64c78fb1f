// A method, or a property with arguments, that was read without being called.
#include "script/arguments.h"
#include "script/script_classes.h"

namespace zelto::script {
namespace {

JSValueRef call(JSContextRef ctx, JSObjectRef function, JSObjectRef, std::size_t count, const JSValueRef* values,
                JSValueRef* exception) {
  auto* held = held_by<AutomationMember>(function);
  if (!held) {
    raise_ended(ctx, exception);
    return JSValueMakeUndefined(ctx);
  }
  const CComPtr<IDispatch> dispatch = held->dispatch();
  const std::wstring name = held->name();
  return call_member(*held->realm(), dispatch.get(), held->id(), name, count, values, exception);
}

// In text and sums the member stands for what it gives without arguments.
JSValueRef convert(JSContextRef ctx, JSObjectRef function, JSType, JSValueRef* exception) {
  JSValueRef value = call(ctx, function, nullptr, 0, nullptr, exception);
  if (!value || *exception || !JSValueIsObject(ctx, value)) return value;
  const JsString text(JSValueToStringCopy(ctx, value, exception));
  return text.get() ? JSValueMakeString(ctx, text.get()) : nullptr;
}

}  // namespace

JSClassRef make_member_class() {
  JSClassDefinition definition = kJSClassDefinitionEmpty;
  definition.className = "Function";
  definition.finalize = finalize_held;
  definition.callAsFunction = call;
  definition.convertToType = convert;
  return JSClassCreate(&definition);
}

}  // namespace zelto::script
