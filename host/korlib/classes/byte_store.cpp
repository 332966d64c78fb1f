#include "classes/byte_store.h"

#include <algorithm>
#include <cstring>
#include <new>

#include <korlib_host/memory_limit.h>

namespace korlib {

bool ByteStore::grow(std::size_t bytes) {
  if (bytes > kMaxSize - position_) return false;
  grow_to(position_ + bytes);
  return true;
}

void ByteStore::grow_to(std::size_t size) {
  // A large block is moved by its pages: it need not grow by much, and a page may have only so much.
  constexpr std::size_t kLarge = std::size_t{16} << 20;
  const std::size_t more = bytes_.capacity() < kLarge ? bytes_.capacity() : bytes_.capacity() / 8;
  const std::size_t capacity = std::max({size, std::min(bytes_.capacity() + more, kMaxSize), std::size_t{256}});
  if (!korlib_host::may_take(capacity - bytes_.capacity())) throw std::bad_alloc();
  bytes_.grow(capacity);
}

void ByteStore::copy_in(std::string_view bytes) {
  if (bytes.empty()) return;
  std::memcpy(bytes_.data() + position_, bytes.data(), bytes.size());
  position_ += bytes.size();
  bytes_.set_size(std::max(bytes_.size(), position_));
}

bool ByteStore::move_to(std::size_t position) {
  const std::size_t end = bytes_.size();
  if (position > end) {
    if (position > kMaxSize) return false;
    if (position > bytes_.capacity()) grow_to(position);
    std::memset(bytes_.data() + end, 0, position - end);
    bytes_.set_size(position);
  }
  position_ = position;
  return true;
}

void ByteStore::assign(base::GrowingBuffer bytes) {
  bytes_ = std::move(bytes);
  position_ = 0;
}

}  // namespace korlib
