#include "base/file_descriptor.h"

#include <unistd.h>

#include <cerrno>

namespace base {

bool FileDescriptor::close() { return number_ < 0 || ::close(release()) == 0; }

int write_all(int number, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(number, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (count == 0) return EIO;  // a device that takes nothing would be asked for ever
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return 0;
}

int read_all(int number, std::span<char> room, std::size_t& got) {
  got = 0;
  while (got < room.size()) {
    const ssize_t count = ::read(number, room.data() + got, room.size() - got);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (count == 0) break;
    got += static_cast<std::size_t>(count);
  }
  return 0;
}

}  // namespace base
