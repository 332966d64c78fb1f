#include "http/body.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace zelto {

void Body::append(std::string_view bytes) {
  if (bytes.empty()) return;
  const std::size_t before = bytes_.size();
  if (bytes.size() > std::numeric_limits<std::size_t>::max() - before) throw std::bad_alloc();
  if (bytes.size() > bytes_.capacity() - before) grow(before + bytes.size());
  std::memcpy(bytes_.data() + before, bytes.data(), bytes.size());
  bytes_.set_size(before + bytes.size());
}

void Body::grow(std::size_t needed) {
  constexpr std::size_t kLeast = std::size_t{16} * 1024;
  std::size_t wanted = std::max({needed, bytes_.capacity() + bytes_.capacity() / 2, kLeast});
  if (expected_ > 0 && wanted > expected_) wanted = std::max(needed, static_cast<std::size_t>(expected_));
  bytes_.grow(wanted);
}

}  // namespace zelto
