#include "http/client_address.h"

namespace zelto {

namespace ip = boost::asio::ip;

ClientAddress client_of(const ip::address& address) {
  if (address.is_v4()) return {false, address.to_v4().to_uint()};
  const auto v6 = address.to_v6();
  if (v6.is_v4_mapped()) return {false, ip::make_address_v4(ip::v4_mapped, v6).to_uint()};
  const auto bytes = v6.to_bytes();
  std::uint64_t prefix = 0;
  for (std::size_t i = 0; i < 8; ++i) prefix = prefix << 8 | bytes[i];
  return {true, prefix};
}

ClientAddress client_of(const std::string& address) {
  boost::system::error_code error;
  return client_of(ip::make_address(address, error));
}

}  // namespace zelto
