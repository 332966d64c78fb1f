// Integers of the script, read where the engine has them.
#pragma once

#include <cstdint>
#include <optional>

#include <korlib/types.h>

#include "script/jsc.h"

namespace zelto::script {

// What stands in front of the 32 bits of every integer, in a word that is no address; 0 when that is not so.
std::uint64_t integer_mark(JSContextRef ctx);

// A value that is an integer of 32 bits, without asking the engine, which has to be given its lock for that; nothing
// for any other value, and for all of them where a version of the engine has them elsewhere.
inline std::optional<LONG> small_integer(JSContextRef ctx, JSValueRef value) noexcept {
  static const std::uint64_t mark = integer_mark(ctx);
  const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(value));
  if (mark == 0 || bits >> 32 != mark >> 32) return std::nullopt;
  return static_cast<LONG>(static_cast<std::uint32_t>(bits));
}

}  // namespace zelto::script
