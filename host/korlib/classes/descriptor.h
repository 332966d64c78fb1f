// An open file, closed when its holder goes.
#pragma once

#include <unistd.h>

#include <string_view>
#include <utility>

namespace korlib {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int file) : file_(file) {}
  Descriptor(Descriptor&& other) noexcept : file_(std::exchange(other.file_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(file_, other.file_);
    return *this;
  }
  ~Descriptor() { close(); }

  explicit operator bool() const { return file_ >= 0; }
  int get() const { return file_; }
  // False when the system could not write everything; errno says why.
  bool close() { return file_ < 0 || ::close(std::exchange(file_, -1)) == 0; }

 private:
  int file_ = -1;
};

// 0, or the errno of the write that failed.
int write_all(int file, std::string_view bytes);

}  // namespace korlib
