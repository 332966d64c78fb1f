// SHA-1's rounds by the instructions that a processor has for them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "compat/processor.h"

#ifdef MIRT_X86

namespace kor_compat {

// Takes `blocks` blocks of 64 bytes into the state. Only where has_sha().
void sha1_rounds(std::array<std::uint32_t, 5>& state, const unsigned char* data, std::size_t blocks);

}  // namespace kor_compat

#endif
