// An open file of the system, closed when its holder goes.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

namespace base {

class FileDescriptor {
 public:
  FileDescriptor() = default;
  // Takes the number over; a negative one, which open() gives when it fails, is none.
  explicit FileDescriptor(int number) : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~FileDescriptor() { close(); }

  explicit operator bool() const { return number_ >= 0; }
  int get() const { return number_; }
  // The caller closes it from here on.
  int release() { return std::exchange(number_, -1); }
  // False when the system could not write everything; errno says why.
  bool close();

 private:
  int number_ = -1;
};

// Writes all of it, in as many steps as that takes. 0, or the errno of the step that failed.
int write_all(int number, std::string_view bytes);
// Fills the room, or what of it the file has: `got` bytes. 0, or the errno of the step that failed.
int read_all(int number, std::span<char> room, std::size_t& got);

}  // namespace base
