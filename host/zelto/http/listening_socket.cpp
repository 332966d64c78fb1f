#include "http/listening_socket.h"

#include <sys/socket.h>

#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <cerrno>
#include <system_error>

namespace zelto {

namespace asio = boost::asio;
using asio::ip::tcp;

namespace {

base::FileDescriptor open_at(const tcp::endpoint& endpoint) {
  base::FileDescriptor made(::socket(endpoint.protocol().family(), SOCK_STREAM | SOCK_CLOEXEC, 0));
  const int on = 1;
  if (!made || ::setsockopt(made.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
      ::bind(made.get(), endpoint.data(), static_cast<socklen_t>(endpoint.size())) != 0 ||
      ::listen(made.get(), asio::socket_base::max_listen_connections) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
  return made;
}

}  // namespace

std::string address_and_port(const std::string& address, std::uint16_t port) {
  const bool is_v6 = address.find(':') != std::string::npos;
  return (is_v6 ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

base::FileDescriptor listen_on(const std::string& address, std::uint16_t port) {
  boost::system::error_code error;
  const auto parsed = asio::ip::make_address(address, error);
  const std::string what = "listening on " + address_and_port(address, port);
  if (error) throw std::system_error(std::error_code(error), what);
  try {
    return open_at({parsed, port});
  } catch (const std::system_error& failed) {
    throw std::system_error(failed.code(), what);
  }
}

}  // namespace zelto
