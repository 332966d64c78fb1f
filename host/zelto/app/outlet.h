// A file, pipe, socket or terminal that is written without waiting for its reader.
#pragma once

#include <chrono>
#include <cstddef>
#include <string_view>

#include "base/file_descriptor.h"

namespace zelto {

class Outlet {
 public:
  // Writes to standard output or standard error, which stays open and as it is: what is open there is shared with other
  // programs, and one that finds it not to wait any more takes that for an error.
  static Outlet of_standard(int number);
  // Takes over a file that was opened not to wait.
  explicit Outlet(base::FileDescriptor file);

  // Writes what is taken at once: `written` bytes. 0 when that is all, EAGAIN when the rest has to wait, or the errno
  // of a failure.
  int write(std::string_view bytes, std::size_t& written) const;
  // Until it may take more or fails, for that long at most.
  void wait(std::chrono::milliseconds patience) const;

 private:
  // How it is kept from waiting: it never does; the descriptor is one of our own, and says so; each call says so; or it
  // is asked before.
  enum class Kind { file, own, socket, asked };

  Outlet(int number, Kind kind, base::FileDescriptor own) : own_(std::move(own)), number_(number), kind_(kind) {}
  long write_some(std::string_view bytes) const;

  base::FileDescriptor own_;
  int number_;
  Kind kind_;
};

}  // namespace zelto
