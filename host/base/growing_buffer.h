// Bytes in memory of std::malloc, which grows where it lies and can be handed on without a copy.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

namespace base {

// The caller decides by how much it grows. Moves and is never copied: there may be gigabytes in it.
class GrowingBuffer {
 public:
  struct Free {
    void operator()(char* bytes) const { std::free(bytes); }
  };
  using Memory = std::unique_ptr<char, Free>;

  GrowingBuffer() = default;
  GrowingBuffer(GrowingBuffer&& other) noexcept { swap(other); }
  GrowingBuffer& operator=(GrowingBuffer&& other) noexcept {
    GrowingBuffer(std::move(other)).swap(*this);
    return *this;
  }

  std::size_t size() const { return size_; }
  std::size_t capacity() const { return capacity_; }
  char* data() { return memory_.get(); }
  std::string_view view() const { return {memory_.get(), size_}; }

  // Makes room for so many bytes in all, more than there is room for. A large block is moved by its pages and not
  // copied, and pages that are never written take no memory. Throws std::bad_alloc, and is unchanged then.
  void grow(std::size_t capacity);
  // How many bytes count as contents, no more than there is room for. Those that are new hold anything.
  void set_size(std::size_t size) { size_ = size; }

  // Gives the memory away, which std::free takes; null when there never was any. The buffer is empty then.
  Memory release();

 private:
  void swap(GrowingBuffer& other) noexcept;

  Memory memory_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace base
