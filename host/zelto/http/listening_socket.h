// The socket at which clients arrive.
#pragma once

#include <cstdint>
#include <string>

#include "base/file_descriptor.h"

namespace zelto {

// "127.0.0.1:8080" or "[::1]:8080".
std::string address_and_port(const std::string& address, std::uint16_t port);

// Bound to the address, and listening; port 0 takes any free one. Throws std::system_error when it cannot be had.
base::FileDescriptor listen_on(const std::string& address, std::uint16_t port);

}  // namespace zelto
