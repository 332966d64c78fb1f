#include "http/client_address.h"

namespace zelto {

namespace ip = boost::asio::ip;

ip::address unmapped(const ip::address& address) {
  if (!address.is_v6() || !address.to_v6().is_v4_mapped()) return address;
  return ip::make_address_v4(ip::v4_mapped, address.to_v6());
}

ClientAddress client_of(const ip::address& shown) {
  const ip::address address = unmapped(shown);
  if (address.is_v4()) return {false, address.to_v4().to_uint()};
  const auto bytes = address.to_v6().to_bytes();
  std::uint64_t prefix = 0;
  for (std::size_t i = 0; i < 8; ++i) prefix = prefix << 8 | bytes[i];
  return {true, prefix};
}

ClientAddress client_of(const std::string& address) {
  boost::system::error_code error;
  return client_of(ip::make_address(address, error));
}

}  // namespace zelto
