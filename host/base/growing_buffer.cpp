#include "base/growing_buffer.h"

#include <new>

namespace base {

void GrowingBuffer::grow(std::size_t capacity) {
  char* const larger = static_cast<char*>(std::realloc(memory_.get(), capacity));
  if (!larger) throw std::bad_alloc();
  (void)memory_.release();  // realloc took it over
  memory_.reset(larger);
  capacity_ = capacity;
}

GrowingBuffer::Memory GrowingBuffer::release() {
  size_ = capacity_ = 0;
  return std::move(memory_);
}

void GrowingBuffer::swap(GrowingBuffer& other) noexcept {
  std::swap(memory_, other.memory_);
  std::swap(size_, other.size_);
  std::swap(capacity_, other.capacity_);
}

}  // namespace base
