#include "http/body.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace zelto {

void Body::append(std::string_view bytes) {
  if (bytes.empty()) return;
  if (bytes.size() > std::numeric_limits<std::size_t>::max() - size_) throw std::bad_alloc();
  if (bytes.size() > capacity_ - size_) grow(size_ + bytes.size());
  std::memcpy(bytes_.get() + size_, bytes.data(), bytes.size());
  size_ += bytes.size();
}

// A large block is moved by its pages, and pages that were never written take no memory: growing costs
// neither a copy nor what is not used yet.
void Body::grow(std::size_t needed) {
  constexpr std::size_t kLeast = std::size_t{16} * 1024;
  std::size_t wanted = std::max({needed, capacity_ + capacity_ / 2, kLeast});
  if (expected_ > 0 && wanted > expected_) wanted = std::max(needed, static_cast<std::size_t>(expected_));
  char* larger = static_cast<char*>(std::realloc(bytes_.get(), wanted));
  if (!larger) throw std::bad_alloc();
  (void)bytes_.release();  // realloc took it over
  bytes_.reset(larger);
  capacity_ = wanted;
}

Body::Bytes Body::release() {
  size_ = capacity_ = 0;
  return std::move(bytes_);
}

void Body::swap(Body& other) noexcept {
  std::swap(bytes_, other.bytes_);
  std::swap(size_, other.size_);
  std::swap(capacity_, other.capacity_);
  std::swap(expected_, other.expected_);
}

}  // namespace zelto
