#include "classes/byte_store.h"

#include <algorithm>
#include <cstring>

namespace korlib {

bool ByteStore::grow(std::size_t bytes) {
  if (bytes > kMaxSize - position_) return false;
  const std::size_t wanted = std::max({position_ + bytes, std::min(capacity_ * 2, kMaxSize), std::size_t{256}});
  std::unique_ptr<char[]> larger = std::make_unique_for_overwrite<char[]>(wanted);
  if (size_ > 0) std::memcpy(larger.get(), data_.get(), size_);
  data_ = std::move(larger);
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

void ByteStore::assign(std::unique_ptr<char[]> data, std::size_t size) {
  data_ = std::move(data);
  capacity_ = size_ = size;
  position_ = 0;
}

}  // namespace korlib
