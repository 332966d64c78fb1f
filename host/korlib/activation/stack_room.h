// How deep the calling thread may still go.
#pragma once

#include <cstddef>

namespace korlib::activation {

// Bytes between the caller's frame and the end of its thread's stack.
std::size_t stack_room() noexcept;

}  // namespace korlib::activation
