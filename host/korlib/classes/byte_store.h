// A growing sequence of bytes with a position: what a stream keeps its contents in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace korlib {

class ByteStore {
 public:
  struct Free {
    void operator()(char* bytes) const { std::free(bytes); }
  };
  // Memory of std::malloc, so that it can grow where it lies.
  using Bytes = std::unique_ptr<char, Free>;
  static constexpr std::size_t kMaxSize = 0x7FFFFFFF;  // positions are LONGs

  std::size_t size() const { return size_; }
  std::size_t position() const { return position_; }
  // From the position to the end.
  std::string_view rest() const { return {data_.get() + position_, size_ - position_}; }
  std::string_view all() const { return {data_.get(), size_}; }

  // Beyond the end, zeros fill the gap. False when the store would become too large; throws bad_alloc.
  [[nodiscard]] bool move_to(std::size_t position);
  void advance(std::size_t bytes) { position_ += bytes; }  // bytes that rest() has shown

  // Writes at the position, over what is there and beyond the end; moves the position. False as above.
  [[nodiscard]] bool write(std::string_view bytes) {
    if (bytes.size() > capacity_ - position_ && !grow(bytes.size())) return false;
    copy_in(bytes);
    return true;
  }
  // The same for one byte where there is room already; false, and nothing written, where there is none.
  [[nodiscard]] bool put(char byte) {
    const std::size_t at = position_;  // a char may alias any member: not read again behind the byte
    if (at >= capacity_) return false;
    data_.get()[at] = byte;
    position_ = at + 1;
    if (at >= size_) size_ = at + 1;
    return true;
  }
  // Room for `bytes` at the position, which must be the end; commit() says how many were used. Null when
  // the store would become too large.
  [[nodiscard]] char* room_at_end(std::size_t bytes) {
    if (bytes > capacity_ - position_ && !grow(bytes)) return nullptr;
    return data_.get() + position_;
  }
  void commit(std::size_t bytes) { size_ = position_ += bytes; }

  void cut_here() { size_ = position_; }
  void clear() { *this = {}; }
  // Takes contents over, and rewinds.
  void assign(Bytes data, std::size_t size);

 private:
  bool grow(std::size_t bytes);
  void copy_in(std::string_view bytes);

  Bytes data_;
  std::size_t capacity_ = 0;
  std::size_t size_ = 0;
  std::size_t position_ = 0;
};

}  // namespace korlib
