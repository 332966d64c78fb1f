#include "base/keyed_hash.h"

#include <random>

namespace base {

const KeyedHash::Key& KeyedHash::key() noexcept {
  static const Key drawn = [] {
    std::random_device device;
    const auto word = [&device] { return std::uint64_t{device()} << 32 | device(); };
    return Key{word(), word()};
  }();
  return drawn;
}

}  // namespace base
