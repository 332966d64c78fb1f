// Arrays across the border, by value.
#pragma once

#include "script/realm_state.h"

namespace zelto::script {

// As RealmState::to_variant and to_script: a failure is left in *exception.
bool array_to_variant(RealmState& realm, JSObjectRef array, VARIANT* out, JSValueRef* exception);
bool bytes_to_variant(RealmState& realm, JSObjectRef bytes, VARIANT* out, JSValueRef* exception);
// Bytes become a Uint8Array; an array of several dimensions one within the other, the first outermost.
JSValueRef array_to_script(RealmState& realm, SAFEARRAY* array, JSValueRef* exception);

}  // namespace zelto::script
