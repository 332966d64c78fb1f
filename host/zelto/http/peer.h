// The other end of a connection: where it is, whether it is there, and how to be rid of it.
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <string>

#include "http/message.h"

namespace zelto {

using Socket = boost::asio::ip::tcp::socket;

// The client's address, "192.0.2.1"; empty when it has gone.
std::string address_of_peer(const Socket& socket);
// Writes both ends of the connection into the request.
void set_addresses(const Socket& socket, HttpRequest& request);

// Whether the client has ended the connection as a whole. One that has only closed its side waits for its answer. May
// be called by any thread.
bool has_gone(int socket);
// Takes the connection from under its socket. The client sees a reset: after a shutdown, a body that ends with the
// connection would look complete. May be called by any thread while a worker writes.
void reset_peer(int socket);
// Takes what has come by now, up to 16 KiB: closing would otherwise reset the connection under an answer.
void take_received(Socket& socket);

}  // namespace zelto
