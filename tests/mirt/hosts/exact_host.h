// A host that exports exactly what a component may import, in front of a runtime that it keeps to itself.
#pragma once

#include <korlib/ptr.h>

namespace test {

// What CoGetObjectContext answers with; null for none.
extern IUnknown* object_context;

// A function of the runtime behind the host.
void* runtime_function(const char* name);

}  // namespace test
