// How much stack the calling thread has left.
//
// A page may recurse through native frames (script calls component calls script, or a template that
// includes itself) where no engine counts. Whoever begins another level asks first and refuses with
// kOutOfStack, so that the page fails and the process lives.
#pragma once

#include <cstddef>

#include <korlib/activation.h>

namespace zelto::script {

using korlib::kOutOfStack;

// Bytes between the current frame and the end of the thread's stack.
std::size_t remaining_stack() noexcept;

// True when another level of calls may not fit.
bool stack_is_low() noexcept;

// S_OK, or kOutOfStack with the thread's error object saying so.
HRESULT check_stack() noexcept;

}  // namespace zelto::script
