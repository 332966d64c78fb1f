// Identifiers as keys of hash tables.
#pragma once

#include <cstddef>
#include <cstring>

#include <korlib/guid.h>

namespace korlib::activation {

// Identifiers are random enough that any eight bytes of them spread well.
struct GuidHash {
  std::size_t operator()(const GUID& guid) const noexcept {
    std::size_t halves[2];
    std::memcpy(halves, &guid, sizeof halves);
    return halves[0] ^ halves[1];
  }
};

}  // namespace korlib::activation
