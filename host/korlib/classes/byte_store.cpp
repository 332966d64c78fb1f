#include "classes/byte_store.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace korlib {

bool ByteStore::grow(std::size_t bytes) {
  if (bytes > kMaxSize - position_) return false;
  const std::size_t wanted = std::max({position_ + bytes, std::min(capacity_ * 2, kMaxSize), std::size_t{256}});
  // A large block is moved by its pages and not copied, so a stream never takes twice its size meanwhile.
  char* larger = static_cast<char*>(std::realloc(data_.get(), wanted));
  if (!larger) throw std::bad_alloc();
  (void)data_.release();  // realloc took it over
  data_.reset(larger);
  capacity_ = wanted;
  return true;
}

void ByteStore::copy_in(std::string_view bytes) {
  if (bytes.empty()) return;
  std::memcpy(data_.get() + position_, bytes.data(), bytes.size());
  position_ += bytes.size();
  size_ = std::max(size_, position_);
}

bool ByteStore::move_to(std::size_t position) {
  if (position > size_) {
    if (position > kMaxSize) return false;
    const std::size_t before = position_;
    position_ = size_;
    if (position - size_ > capacity_ - size_ && !grow(position - size_)) {
      position_ = before;
      return false;
    }
    std::memset(data_.get() + size_, 0, position - size_);
    size_ = position;
  }
  position_ = position;
  return true;
}

void ByteStore::assign(Bytes data, std::size_t size) {
  data_ = std::move(data);
  capacity_ = size_ = size;
  position_ = 0;
}

}  // namespace korlib
