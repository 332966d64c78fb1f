// How deep the calling thread may still go.
#pragma once

#include <cstddef>

namespace base {

// Bytes between the caller's frame and the end of its thread's stack that can be used; all of the address space where
// the system does not tell.
std::size_t stack_room() noexcept;

}  // namespace base
