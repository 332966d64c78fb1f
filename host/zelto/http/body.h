// The body of a request: bytes that grow as they arrive, and can be handed on without a copy.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/growing_buffer.h"

namespace zelto {

// A body may be hundreds of megabytes, so there is one of each: it moves and is never copied.
class Body {
 public:
  using Bytes = base::GrowingBuffer::Memory;

  Body() = default;
  explicit Body(std::string_view bytes) { append(bytes); }
  Body& operator=(std::string_view bytes) { return *this = Body(bytes); }

  operator std::string_view() const { return bytes_.view(); }
  std::size_t size() const { return bytes_.size(); }
  std::size_t capacity() const { return bytes_.capacity(); }

  // The size that was announced. Nothing is allocated for it, as it may never come; it only keeps the
  // growth from going beyond it.
  void expect(std::uint64_t size) { expected_ = size; }
  // Throws std::bad_alloc, and is unchanged then.
  void append(std::string_view bytes);
  // Gives the memory away, which came from std::malloc; null when there are no bytes.
  Bytes release() { return bytes_.release(); }

 private:
  void grow(std::size_t needed);

  base::GrowingBuffer bytes_;
  std::uint64_t expected_ = 0;
};

}  // namespace zelto
