// Pages recurse through native frames, so they run on threads with room for it.
#pragma once

#include <cstddef>
#include <functional>

namespace zelto {

inline constexpr std::size_t kPageStack = std::size_t{16} * 1024 * 1024;

// Runs `body` on a thread of its own with kPageStack bytes of stack, and waits for it. What it throws is
// thrown here.
void on_big_stack(const std::function<void()>& body);

}  // namespace zelto
