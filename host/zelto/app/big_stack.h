// Pages recurse through native frames, so they run on threads with room for it.
#pragma once

#include <cstddef>
#include <functional>

namespace zelto {

#ifdef __SANITIZE_THREAD__
// That sanitizer keeps the whole chain of calls of every allocation, so that what a runaway recursion takes
// grows with the square of its depth.
inline constexpr std::size_t kPageStack = std::size_t{3} << 20;
#else
inline constexpr std::size_t kPageStack = std::size_t{16} << 20;
#endif

// Runs `body` on a thread of its own with kPageStack bytes of stack, and waits for it. What it throws is
// thrown here.
void on_big_stack(const std::function<void()>& body);

}  // namespace zelto
