#include "script/vbscript/library.h"

#include <new>

#include "script/engine.h"
#include "script/vbscript/natives.h"

namespace zelto::script::vbscript {

Library::Library(Engine& engine, JSContextRef context, JSValueRef prelude, JSValueRef host_prototype)
    : context_(context) {
  const Watchdog::Quiet quiet(engine.watchdog());  // a half one is of no use
  JSValueRef arguments[] = {make_natives(context), prelude, host_prototype};
  JSValueRef function = JSScriptEvaluate(context, engine.vbscript(), nullptr, nullptr);
  JSValueRef made =
      function ? JSObjectCallAsFunction(context, object_of(function), nullptr, 3, arguments, nullptr) : nullptr;
  if (!made) throw std::bad_alloc();  // or without stack
  unsigned at = 0;
  for (JSObjectRef& kept : parts_) {
    kept = object_of(JSObjectGetPropertyAtIndex(context, object_of(made), at++, nullptr));
    JSValueProtect(context, kept);
  }
}

Library::~Library() {
  for (JSObjectRef kept : parts_) JSValueUnprotect(context_, kept);
}

JSValueRef Library::call(Part which, std::span<const JSValueRef> arguments, JSValueRef* exception) const {
  return JSObjectCallAsFunction(context_, part(which), nullptr, arguments.size(), arguments.data(), exception);
}

JSValueRef Library::pack(JSValueRef value, JSValueRef* exception) const {
  return call(Part::pack, {&value, 1}, exception);
}

JSValueRef Library::box(int kind, JSValueRef number, JSValueRef* exception) const {
  const JSValueRef arguments[] = {JSValueMakeNumber(context_, kind), number};
  return call(Part::box, arguments, exception);
}

Library::Member Library::member(JSObjectRef object, JSValueRef name) const {
  const JSValueRef arguments[] = {object, name};
  JSValueRef kind = call(Part::member, arguments, nullptr);
  if (!kind || !JSValueIsNumber(context_, kind)) return Member::not_an_instance;
  return static_cast<Member>(1 + static_cast<int>(JSValueToNumber(context_, kind, nullptr)));
}

JSValueRef Library::lend(JSValueRef value, JSValueRef* exception) const {
  return call(Part::lend, {&value, 1}, exception);
}

JSValueRef Library::array(JSValueRef bounds, JSValueRef elements, JSValueRef* exception) const {
  const JSValueRef arguments[] = {bounds, elements};
  return call(Part::array, arguments, exception);
}

}  // namespace zelto::script::vbscript
