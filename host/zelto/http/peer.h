// The other end of a connection: where it is, whether it is there, and how to be rid of it.
#pragma once

#include <boost/asio/basic_stream_socket.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "http/io_loop.h"

namespace zelto {

using Socket = boost::asio::basic_stream_socket<boost::asio::ip::tcp, IoLoop::Executor>;

// Both ends of a connection: "192.0.2.1" and a port. Empty and 0 when the client has gone already.
struct Ends {
  std::string remote_address;
  std::string local_address;
  std::uint16_t remote_port = 0;
  std::uint16_t local_port = 0;
};
Ends ends_of(const Socket& socket);

// What has come by now, as far as there is room for it: how much that is. 0 as well when it cannot be read, which
// whoever waits for more finds out.
std::size_t receive_now(Socket& socket, std::span<char> room);
// Whether the client has ended the connection as a whole. One that has only closed its side waits for its answer. May
// be called by any thread.
bool has_gone(int socket);
// Takes the connection from under its socket. The client sees a reset: after a shutdown, a body that ends with the
// connection would look complete. May be called by any thread while a worker writes.
void reset_peer(int socket);
// Tells the client that nothing more comes.
void end_sending(Socket& socket);
// Whether something has come that was not received yet.
bool has_received(const Socket& socket);
// Takes what has come by now, up to 16 KiB: closing would otherwise reset the connection under an answer.
void take_received(Socket& socket);

}  // namespace zelto
