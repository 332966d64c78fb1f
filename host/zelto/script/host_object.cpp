#include "script/host_object.h"

#include "script/automation_member.h"
#include "script/automation_object.h"
#include "script/realm.h"
#include "script/world/script_builtins.h"

namespace zelto::script {
namespace {

// Any thread may collect.
void finalize(JSObjectRef object) {
  if (auto* held = static_cast<HostObject*>(JSObjectGetPrivate(object))) held->engine().bury(held);
}

JSClassRef make_opaque_class() {
  const JSClassDefinition definition = host_class("Object");
  return JSClassCreate(&definition);
}

}  // namespace

HostObject::HostObject(Realm& realm) : engine_(realm.engine()), realm_(&realm) { realm.wrappers().adopt(*this); }

void HostObject::end_of_realm() {
  realm_ = nullptr;
  release();
}

void HostObject::begin_again(Realm& realm) {
  realm_ = &realm;
  realm.wrappers().adopt(*this);
}

HostClasses::HostClasses()
    : object(make_object_class()),
      member(make_member_class()),
      reference(make_reference_class()),
      opaque(make_opaque_class()),
      builtins(make_builtins_class()) {}

HostClasses::~HostClasses() {
  for (JSClassRef made : {object, member, reference, opaque, builtins}) JSClassRelease(made);
}

JSClassDefinition host_class(const char* name) {
  JSClassDefinition definition = kJSClassDefinitionEmpty;
  definition.className = name;
  definition.finalize = finalize;
  return definition;
}

HostObject* living_host_object(JSObjectRef object) {
  auto* held = static_cast<HostObject*>(JSObjectGetPrivate(object));
  return held && held->realm() ? held : nullptr;
}

void raise_ended(JSContextRef ctx, JSValueRef* exception) {
  JSValueRef text = string_value(ctx, L"The page that made this object has ended");
  JSObjectRef error = JSObjectMakeError(ctx, 1, &text, nullptr);
  set_hidden(ctx, error, "number", JSValueMakeNumber(ctx, kDisconnected));
  *exception = error;
}

}  // namespace zelto::script
