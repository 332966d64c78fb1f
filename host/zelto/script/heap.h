// What scripts take of the process's memory.
#pragma once

#include <cstddef>

#include "script/jsc.h"

namespace zelto::script {

// Whether the context's virtual machine needs more than that for its objects; garbage is freed before it counts.
// A script may be running in it.
bool heap_exceeds(JSContextRef ctx, std::size_t bytes);

// Frees what no living realm of the context's virtual machine holds.
void collect_garbage(JSContextRef ctx);

}  // namespace zelto::script
