#include "script/world/prelude.h"

#include <memory>
#include <new>

#include "script/engine.h"

namespace zelto::script {
namespace {

constexpr std::size_t kStates = 4;  // numbers that the script and the host share

}  // namespace

Prelude::Prelude(Engine& engine, JSContextRef context) : context_(context) {
  JSObjectRef builtins = JSObjectMake(context_, engine.classes().builtins, nullptr);
  const HostClasses& classes = engine.classes();
  JSObjectRef prototypes = JSObjectMakeArray(context_, 0, nullptr, nullptr);
  if (!prototypes) throw std::bad_alloc();
  unsigned count = 0;
  for (JSClassRef made : {classes.object, classes.member, classes.reference, classes.opaque}) {
    JSValueRef prototype = JSObjectGetPrototype(context_, JSObjectMake(context_, made, nullptr));
    JSObjectSetPropertyAtIndex(context_, prototypes, count++, prototype, nullptr);
  }
  auto state = std::make_unique<std::int32_t[]>(kStates);
  state_ = state.get();
  const auto release = [](void* bytes, void*) { delete[] static_cast<std::int32_t*>(bytes); };
  JSObjectRef shared = JSObjectMakeTypedArrayWithBytesNoCopy(context_, kJSTypedArrayTypeInt32Array, state.release(),
                                                             kStates * sizeof(std::int32_t), release, nullptr, nullptr);
  if (!shared) throw std::bad_alloc();
  JSValueRef arguments[] = {builtins, prototypes, shared};
  JSValueRef function = JSScriptEvaluate(context_, engine.prelude(), nullptr, nullptr);
  JSValueRef made =
      function ? JSObjectCallAsFunction(context_, object_of(function), nullptr, 3, arguments, nullptr) : nullptr;
  if (!made) throw std::bad_alloc();  // or without stack
  unsigned at = 0;
  for (JSObjectRef* kept : {&make_error_, &make_array_, &has_name_, &object_prototype_, &begin_, &take_, &keep_method_,
                            &engine_text_of_, &make_library_}) {
    *kept = object_of(JSObjectGetPropertyAtIndex(context_, object_of(made), at++, nullptr));
    JSValueProtect(context_, *kept);
  }
  JSObjectRef global = JSContextGetGlobalObject(context_);
  JSObjectSetProperty(context_, global, JsString("$zelto").get(), builtins, kFixed, nullptr);
}

Prelude::~Prelude() {
  for (JSObjectRef kept : {make_error_, make_array_, has_name_, object_prototype_, begin_, take_, keep_method_,
                           engine_text_of_, make_library_}) {
    JSValueUnprotect(context_, kept);
  }
}

void Prelude::keep_method(JSObjectRef object, JSStringRef name, JSObjectRef method) const {
  JSValueRef arguments[] = {object, JSValueMakeString(context_, name), method};
  JSObjectCallAsFunction(context_, keep_method_, nullptr, 3, arguments, nullptr);
}

JSValueRef Prelude::engine_text_of(JSObjectRef function, JSValueRef* exception) const {
  return JSObjectCallAsFunction(context_, engine_text_of_, function, 0, nullptr, exception);
}

void Prelude::make_library() const { JSObjectCallAsFunction(context_, make_library_, nullptr, 0, nullptr, nullptr); }

JSObjectRef Prelude::make_error(ErrorKind kind, std::wstring_view message) const {
  JSValueRef arguments[] = {JSValueMakeNumber(context_, static_cast<int>(kind)), string_value(context_, message)};
  JSValueRef error = kind == ErrorKind::plain
                         ? nullptr
                         : JSObjectCallAsFunction(context_, make_error_, nullptr, 2, arguments, nullptr);
  // Making the nicer kind can fail for want of stack.
  if (!error || !JSValueIsObject(context_, error)) error = JSObjectMakeError(context_, 1, &arguments[1], nullptr);
  return object_of(error);
}

JSValueRef Prelude::items_of(JSObjectRef object, JSValueRef* exception) const {
  JSValueRef argument = object;
  return JSObjectCallAsFunction(context_, make_array_, nullptr, 1, &argument, exception);
}

bool Prelude::has_own_name(JSObjectRef object, const JsString& name) const {
  if (!JSObjectHasProperty(context_, object, name.get())) return false;
  if (!JSObjectHasProperty(context_, object_prototype_, name.get())) return true;
  JSValueRef arguments[] = {object, JSValueMakeString(context_, name.get())};
  JSValueRef answer = JSObjectCallAsFunction(context_, has_name_, nullptr, 2, arguments, nullptr);
  return answer && JSValueToBoolean(context_, answer);
}

void Prelude::begin(JSValueRef response, JSValueRef server, JSValueRef literals) const {
  JSValueRef undefined = JSValueMakeUndefined(context_);
  JSValueRef arguments[] = {response ? response : undefined, server ? server : undefined,
                            literals ? literals : undefined};
  state_[0] = state_[3] = 0;
  JSObjectCallAsFunction(context_, begin_, nullptr, 3, arguments, nullptr);
}

void Prelude::end() const {
  if (state_[2] != 0) begin(nullptr, nullptr, nullptr);
}

JSValueRef Prelude::take_text() const {
  state_[0] = 0;
  return JSObjectCallAsFunction(context_, take_, nullptr, 0, nullptr, nullptr);
}

}  // namespace zelto::script
