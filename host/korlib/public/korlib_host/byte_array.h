// Byte arrays of memory that is there already.
#pragma once

#include <cstddef>

#include <korlib/safearray.h>

namespace korlib_host {

// A one-dimensional array of bytes that takes over `data`, which came from std::malloc and holds `size`
// bytes; `data` may be null for none. Null when there is no memory or an index would be no LONG: `data` is
// the caller's still.
KORLIB_API SAFEARRAY* adopt_bytes(void* data, std::size_t size) noexcept;

}  // namespace korlib_host
