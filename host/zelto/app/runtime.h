// The component runtime of this process, and the libraries that are registered with it.
#pragma once

#include <korlib_host/modules.h>

#include <string>
#include <vector>

namespace zelto {

// Sets up the registry store, the type libraries, and the component that lies beside this program. Must be called
// before any page runs; calling it again does nothing.
void set_up_runtime();

// Those of the component that lies beside this program.
const std::vector<korlib_host::NamedClass>& component_classes();

// `zelto register` and `zelto unregister`: the exit code. What fails is written to standard error.
int register_library(const std::string& library);
int unregister_library(const std::string& library);

}  // namespace zelto
