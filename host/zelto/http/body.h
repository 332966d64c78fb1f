// The body of a request: bytes that grow as they arrive, and can be handed on without a copy.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace zelto {

// A body may be hundreds of megabytes, so there is one of each: it moves and is never copied.
class Body {
 public:
  struct Free {
    void operator()(char* bytes) const { std::free(bytes); }
  };
  using Bytes = std::unique_ptr<char, Free>;

  Body() = default;
  explicit Body(std::string_view bytes) { append(bytes); }
  Body(Body&& other) noexcept { swap(other); }
  Body& operator=(Body&& other) noexcept {
    Body(std::move(other)).swap(*this);
    return *this;
  }
  Body& operator=(std::string_view bytes) { return *this = Body(bytes); }

  operator std::string_view() const { return {bytes_.get(), size_}; }
  std::size_t size() const { return size_; }
  std::size_t capacity() const { return capacity_; }

  // The size that was announced. Nothing is allocated for it, as it may never come; it only keeps the
  // growth from going beyond it.
  void expect(std::uint64_t size) { expected_ = size; }
  // Throws std::bad_alloc, and is unchanged then.
  void append(std::string_view bytes);
  // Gives the memory away, which came from std::malloc; null when there are no bytes.
  Bytes release();

 private:
  void swap(Body& other) noexcept;
  void grow(std::size_t needed);

  Bytes bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
  std::uint64_t expected_ = 0;
};

}  // namespace zelto
