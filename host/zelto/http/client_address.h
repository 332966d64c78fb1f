// Whom an address stands for, when clients are counted.
#pragma once

#include <boost/asio/ip/address.hpp>
#include <cstdint>
#include <string>
#include <tuple>

namespace zelto {

// An IPv4 address, or the /64 of an IPv6 address: one client may use any address of its own /64.
struct ClientAddress {
  bool is_v6 = false;
  std::uint64_t number = 0;

  bool operator==(const ClientAddress&) const = default;
  bool operator<(const ClientAddress& other) const {
    return std::tie(is_v6, number) < std::tie(other.is_v6, other.number);
  }
};

// The IPv4 address that an IPv6 socket shows as ::ffff:a.b.c.d; any other as it is.
boost::asio::ip::address unmapped(const boost::asio::ip::address& address);

ClientAddress client_of(const boost::asio::ip::address& address);
// What is not an address counts as one client.
ClientAddress client_of(const std::string& address);

}  // namespace zelto
