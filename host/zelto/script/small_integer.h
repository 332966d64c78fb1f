// Integers of the script, read where the engine has them.
#pragma once

#include <optional>

#include <korlib/types.h>

#include "script/jsc.h"

namespace zelto::script {

// A value that is an integer of 32 bits, without asking the engine, which has to be given its lock for that; nothing
// for any other value, and for all of them where a version of the engine has them elsewhere.
std::optional<LONG> small_integer(JSContextRef ctx, JSValueRef value) noexcept;

}  // namespace zelto::script
