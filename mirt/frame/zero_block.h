// Zeroing the memory of a pooled object before it is built.
#pragma once

#include <cstddef>

namespace mirt {

// Defined out of the compiler's sight: it may take stores that come before a constructor for dead, those
// of a value-initialisation among them, and leaves the last object's bytes in what no constructor sets.
void zero_block(void* block, std::size_t bytes);

}  // namespace mirt
