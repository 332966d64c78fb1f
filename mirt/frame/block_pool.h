// The memory of released objects of one kind, kept for reuse.
#pragma once

#include <cstddef>
#include <vector>

#include "frame/lock.h"

namespace mirt {

// Last in, first out, without a limit, until the pool goes; blocks still in use then are not tracked. Any
// thread may call both operations.
class BlockPool {
 public:
  // Blocks are as malloc aligns them.
  explicit BlockPool(std::size_t block_bytes) : block_bytes_(block_bytes) {}
  ~BlockPool();
  BlockPool(const BlockPool&) = delete;
  BlockPool& operator=(const BlockPool&) = delete;

  // A block of zeros, null when there is no memory for it.
  //
  // Defined out of the compiler's sight: it may take stores that come before a constructor for dead, those
  // of a value-initialisation among them, and leaves the last object's bytes in what no constructor sets.
  void* take();
  // Keeps a block that take gave.
  void keep(void* block) noexcept;

 private:
  void* last_kept();

  const std::size_t block_bytes_;
  CCriticalSection lock_;
  std::vector<void*> free_;
};

}  // namespace mirt
