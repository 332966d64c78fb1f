// Function.prototype.toString: what a function says of itself.
#pragma once

#include <cstddef>

#include "script/jsc.h"

namespace zelto::script {

// A function of the page shows its source as it stands in the page's files; the engine has it as it was rewritten
// (language/rewriter.h). One of the host's shows no more than the language's own do. What the page has made of text
// while it ran is shown as the engine has it.
JSValueRef function_text(JSContextRef ctx, JSObjectRef, JSObjectRef function, std::size_t, const JSValueRef*,
                         JSValueRef* exception);

}  // namespace zelto::script
