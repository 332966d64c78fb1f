// The names that a loaded module exports.
#pragma once

#include <string>
#include <vector>

namespace zelto {

// `module` is what dlopen answered. Names of what is defined in the module, in no order; none when the
// module's tables are not as the loader's own are.
std::vector<std::string> exported_symbols(void* module);

}  // namespace zelto
