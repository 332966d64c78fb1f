#include "frame/block_pool.h"

#include <cstdlib>
#include <cstring>
#include <mutex>

namespace mirt {

BlockPool::~BlockPool() {
  for (void* block : free_) std::free(block);
}

void* BlockPool::take() {
  void* block = last_kept();
  if (!block) block = std::malloc(block_bytes_);
  if (block) std::memset(block, 0, block_bytes_);
  return block;
}

void* BlockPool::last_kept() {
  const std::lock_guard guard(lock_);
  if (free_.empty()) return nullptr;
  void* block = free_.back();
  free_.pop_back();
  return block;
}

void BlockPool::keep(void* block) noexcept {
  try {
    const std::lock_guard guard(lock_);
    free_.push_back(block);
  } catch (...) {
    std::free(block);  // no memory to remember it
  }
}

}  // namespace mirt
