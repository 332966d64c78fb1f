// The engine classes of what a script sees of the host: automation objects, their members, references
// to calls, opaque objects and the helper that rewritten code calls.
#pragma once

#include "script/engine_state.h"
#include "script/held.h"

namespace zelto::script {

EngineState::Classes make_classes();

JSClassRef make_object_class();     // automation_object.cpp
JSClassRef make_member_class();     // automation_member.cpp
JSClassRef make_reference_class();  // reference.cpp
JSClassRef make_helper_class();     // helper.cpp

// Private data goes to the engine's graveyard; any thread may collect.
void finalize_held(JSObjectRef object);

// For an object whose realm has ended before the page that still has it: an executed page's, say.
void raise_ended(JSContextRef ctx, JSValueRef* exception);

// The private data of an object of one of these classes while its realm lives, else null.
template <class Kind>
Kind* held_by(JSObjectRef object) {
  auto* held = static_cast<Kind*>(static_cast<Held*>(JSObjectGetPrivate(object)));
  return held && held->realm() ? held : nullptr;
}

}  // namespace zelto::script
