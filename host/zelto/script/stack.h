// Refusing another level of calls before the thread's stack is used up.
//
// A page may recurse through native frames (script calls component calls script, or a template that
// includes itself) where no engine counts. Whoever begins another level asks first and refuses with
// kOutOfStack, so that the page fails and the process lives.
#pragma once

#include <korlib/activation.h>

namespace zelto::script {

using korlib::kOutOfStack;

// True when another level of calls may not fit.
bool stack_is_low() noexcept;

// S_OK, or kOutOfStack with the thread's error object saying so.
HRESULT check_stack() noexcept;

}  // namespace zelto::script
