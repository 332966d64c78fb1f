// What a page may take in memory, for the few places of the runtime that could take very much of it within one call.
//
// A host that limits its pages counts what they take, and looks at the count where script and objects call each other.
// Between two such looks, a database may give rows without end, or a stream may be told to be two gigabytes long: there
// the runtime asks. Without a limit it takes what there is. What other libraries take for a page, a driver or the
// script engine, the host's allocator asks for, late.
#pragma once

#include <cstddef>

namespace korlib_host {

class MemoryLimit {
 public:
  // Whether the page may take a block of so many bytes more. Asked on the page's thread, which goes on without the
  // block when it may not.
  virtual bool allows(std::size_t bytes) noexcept = 0;
  // Whether the program's allocator may give it such a block. No code asks for itself: without the block, it goes on as
  // without memory, and the page ends for that. Asked on the page's thread.
  virtual bool bears(std::size_t bytes) noexcept = 0;
  // Whether something more may be kept where it outlives the page. Asked on the page's thread.
  virtual bool may_keep() noexcept = 0;
  // Whether the page has taken more than it may: then it ends, as soon as the statement that took it has been
  // cancelled. Asked by any thread while a statement of the page runs.
  virtual bool is_exceeded() noexcept = 0;

 protected:
  ~MemoryLimit() = default;
};

// That of the calling thread, which outlives its use; null, as at first, for none.
[[gnu::visibility("default")]] void set_memory_limit(MemoryLimit* limit) noexcept;
[[gnu::visibility("default")]] MemoryLimit* memory_limit() noexcept;

// Whether something more may be kept where it outlives the page (kept_values.h).
inline bool may_keep() noexcept {
  MemoryLimit* const limit = memory_limit();
  return !limit || limit->may_keep();
}

// A block from this size on is worth asking.
inline constexpr std::size_t kLargeBlock = std::size_t{1} << 20;

inline bool may_take(std::size_t bytes) noexcept {
  if (bytes < kLargeBlock) return true;
  MemoryLimit* const limit = memory_limit();
  return !limit || limit->allows(bytes);
}

}  // namespace korlib_host
