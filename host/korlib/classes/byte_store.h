// A growing sequence of bytes with a position: what a stream keeps its contents in.
#pragma once

#include <cstddef>
#include <string_view>

#include "base/growing_buffer.h"

namespace korlib {

class ByteStore {
 public:
  static constexpr std::size_t kMaxSize = 0x7FFFFFFF;  // positions are LONGs

  std::size_t size() const { return bytes_.size(); }
  std::size_t position() const { return position_; }
  // From the position to the end.
  std::string_view rest() const { return bytes_.view().substr(position_); }
  std::string_view all() const { return bytes_.view(); }

  // Beyond the end, zeros fill the gap. False when the store would become too large; throws bad_alloc.
  [[nodiscard]] bool move_to(std::size_t position);
  void advance(std::size_t bytes) { position_ += bytes; }  // bytes that rest() has shown

  // Writes at the position, over what is there and beyond the end; moves the position. False as above.
  [[nodiscard]] bool write(std::string_view bytes) {
    if (bytes.size() > bytes_.capacity() - position_ && !grow(bytes.size())) return false;
    copy_in(bytes);
    return true;
  }
  // The same for one byte where there is room already; false, and nothing written, where there is none.
  [[nodiscard]] bool put(char byte) {
    const std::size_t at = position_;  // a char may alias any member: not read again once the byte is written
    if (at >= bytes_.capacity()) return false;
    bytes_.data()[at] = byte;
    position_ = at + 1;
    if (at >= bytes_.size()) bytes_.set_size(at + 1);
    return true;
  }
  // Room for `bytes` at the position, which must be the end; commit() says how many were used. Null when
  // the store would become too large.
  [[nodiscard]] char* room_at_end(std::size_t bytes) {
    if (bytes > bytes_.capacity() - position_ && !grow(bytes)) return nullptr;
    return bytes_.data() + position_;
  }
  void commit(std::size_t bytes) { bytes_.set_size(position_ += bytes); }

  // Where a sequence of writes or reads began, for going back there when it cannot be ended. Bytes that were
  // overwritten stay so; what was added goes.
  struct Place {
    std::size_t position;
    std::size_t size;
  };
  Place place() const { return {position_, size()}; }
  void go_back(const Place& place) {
    position_ = place.position;
    bytes_.set_size(place.size);
  }

  void cut_here() { bytes_.set_size(position_); }
  void clear() { *this = {}; }
  // Takes contents over, and rewinds.
  void assign(base::GrowingBuffer bytes);

 private:
  bool grow(std::size_t bytes);
  void grow_to(std::size_t size);
  void copy_in(std::string_view bytes);

  base::GrowingBuffer bytes_;
  std::size_t position_ = 0;
};

}  // namespace korlib
