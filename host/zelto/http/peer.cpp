#include "http/peer.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>

namespace zelto {

Ends ends_of(const Socket& socket) {
  boost::system::error_code error;
  const auto remote = socket.remote_endpoint(error);
  if (error) return {};
  const auto local = socket.local_endpoint(error);
  if (error) return {};
  return {remote.address().to_string(), local.address().to_string(), remote.port(), local.port()};
}

std::size_t receive_now(Socket& socket, std::span<char> room) {
  const ssize_t count = ::recv(socket.native_handle(), room.data(), room.size(), MSG_DONTWAIT);
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

bool has_gone(int socket) {
  pollfd state{socket, 0, 0};
  return ::poll(&state, 1, 0) > 0 && (state.revents & (POLLERR | POLLHUP)) != 0;
}

void reset_peer(int socket) {
  const sockaddr nobody{.sa_family = AF_UNSPEC, .sa_data = {}};
  // connect() would do the same, but the thread sanitizer takes it for the making of another socket.
  ::syscall(SYS_connect, socket, &nobody, sizeof nobody);
}

void end_sending(Socket& socket) {
  boost::system::error_code ignored;
  socket.shutdown(Socket::shutdown_send, ignored);
}

bool has_received(const Socket& socket) {
  boost::system::error_code ignored;
  return socket.available(ignored) > 0;
}

void take_received(Socket& socket) {
  std::array<char, std::size_t{16} * 1024> taken{};
  ::recv(socket.native_handle(), taken.data(), taken.size(), MSG_DONTWAIT);
}

}  // namespace zelto
