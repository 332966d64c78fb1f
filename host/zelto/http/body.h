// The body of a request: bytes that grow as they arrive, and can be handed on without a copy.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "base/growing_buffer.h"
#include "http/spool.h"

namespace zelto {

// A body may be hundreds of megabytes, so there is one of each: it moves and is never copied.
class Body {
 public:
  using Bytes = base::GrowingBuffer::Memory;

  Body() = default;
  explicit Body(std::string_view bytes) { append(bytes); }
  Body& operator=(std::string_view bytes) { return *this = Body(bytes); }

  // Empty while the bytes lie in a file: load() first.
  operator std::string_view() const { return bytes_.view(); }
  std::size_t size() const { return bytes_.size(); }
  std::size_t capacity() const { return bytes_.capacity(); }

  // Where a body waits for its end that is too large for memory, or comes when there is no more. Without a spool it
  // lies in memory in any case.
  void use(Spool& spool);
  // The size that was announced. Nothing is allocated for it, as it may never come; it only keeps the
  // growth from going beyond it.
  void expect(std::uint64_t size) { expected_ = size; }
  // Throws std::bad_alloc, or std::system_error when there is no room in the spool either, and is unchanged then.
  void append(std::string_view bytes);
  // Brings the bytes into memory that lie in a file. Throws what append() throws.
  void load();
  // Gives the memory away, which came from std::malloc; null when there are no bytes.
  Bytes release();

 private:
  std::size_t grown_to(std::size_t needed) const;
  void append_to_file(std::string_view bytes);

  base::GrowingBuffer bytes_;
  std::uint64_t expected_ = 0;
  Spool* spool_ = nullptr;
  Share share_;
  std::optional<SpoolFile> file_;  // in place of the memory
};

}  // namespace zelto
