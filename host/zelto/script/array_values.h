// Arrays across the border, by value.
#pragma once

#include "script/values.h"

namespace zelto::script {

// As Values::to_variant and to_script, which call them: a failure is left in *exception.
bool array_to_variant(Values& values, JSObjectRef array, VARIANT* out, JSValueRef* exception);
bool bytes_to_variant(Values& values, JSObjectRef bytes, VARIANT* out, JSValueRef* exception);
// Bytes become a Uint8Array; an array of several dimensions one within the other, the first outermost.
JSValueRef array_to_script(Values& values, SAFEARRAY* array, JSValueRef* exception);

}  // namespace zelto::script
