// What the library calls of the host.
#pragma once

#include "script/jsc.h"

namespace zelto::script::vbscript {

// An object of functions. As functions of the kind that compiled code calls straight away.
JSObjectRef make_natives(JSContextRef context);

// The parts of it.
struct Native {
  const char* name;
  JSObjectCallAsFunctionCallback function;
};
// Members of automation objects.
void add_object_natives(JSContextRef context, JSObjectRef target);
// Numbers, dates and locales in text, and the clock.
void add_text_natives(JSContextRef context, JSObjectRef target);

// Eval and Execute.
void add_code_natives(JSContextRef context, JSObjectRef target);

void add_native(JSContextRef context, JSObjectRef target, const Native& native);

}  // namespace zelto::script::vbscript
