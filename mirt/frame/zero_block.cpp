#include "frame/zero_block.h"

#include <cstring>

namespace mirt {

void zero_block(void* block, std::size_t bytes) { std::memset(block, 0, bytes); }

}  // namespace mirt
