// The changing name of the request field that carries the command.
#pragma once

#include <cstdint>
#include <string>

#include <korlib/types.h>

namespace page {

// Six capital letters from a Mersenne Twister that starts at `seed`. A name that changes, not a secret.
std::wstring draw_command_key(std::uint32_t seed);

// The same, seeded with the clock; two draws in one millisecond are alike.
std::wstring draw_command_key();

}  // namespace page
