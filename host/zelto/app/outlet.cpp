#include "app/outlet.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <string>
#include <utility>

namespace zelto {

namespace {

mode_t type_of(int number) {
  struct stat status {};
  return ::fstat(number, &status) == 0 ? status.st_mode & S_IFMT : 0;
}

bool is_ready(int number, int milliseconds) {
  pollfd asked{number, POLLOUT, 0};
  return ::poll(&asked, 1, milliseconds) > 0;
}

}  // namespace

Outlet Outlet::of_standard(int number) {
  const mode_t type = type_of(number);
  if (type == S_IFSOCK) return {number, Kind::socket, {}};
  if (type != S_IFIFO && ::isatty(number) == 0) return {number, Kind::file, {}};
  // Opened once more: whether it waits is a matter of what is open, not of the descriptor.
  const std::string name = "/proc/self/fd/" + std::to_string(number);
  base::FileDescriptor again(::open(name.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!again) return {number, Kind::asked, {}};
  const int own = again.get();
  return {own, Kind::own, std::move(again)};
}

Outlet::Outlet(base::FileDescriptor file) : own_(std::move(file)), number_(own_.get()), kind_(Kind::own) {}

int Outlet::write(std::string_view bytes, std::size_t& written) const {
  written = 0;
  while (written < bytes.size()) {
    const long count = write_some(bytes.substr(written));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (count == 0) return EIO;  // a device that takes nothing would be asked for ever
    written += static_cast<std::size_t>(count);
  }
  return 0;
}

long Outlet::write_some(std::string_view bytes) const {
  if (kind_ == Kind::socket) return ::send(number_, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  if (kind_ == Kind::asked) {
    if (!is_ready(number_, 0)) {
      errno = EAGAIN;
      return -1;
    }
    bytes = bytes.substr(0, PIPE_BUF);  // has room, once there is any
  }
  return ::write(number_, bytes.data(), bytes.size());
}

void Outlet::wait(std::chrono::milliseconds patience) const { is_ready(number_, static_cast<int>(patience.count())); }

}  // namespace zelto
