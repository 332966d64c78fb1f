// What the process sets up once, before any page runs.
#pragma once

namespace zelto {

// The registry store, the type libraries, and the component that lies beside this program. Calling it
// again does nothing.
void set_up_runtime();

}  // namespace zelto
