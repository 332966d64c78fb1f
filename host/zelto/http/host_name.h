// The host that a request is for.
#pragma once

#include <string_view>

namespace zelto {

// Whether the text can stand in a Host header: a name or an address, then perhaps a colon and a port. An
// empty one is allowed there.
bool is_host(std::string_view text);

}  // namespace zelto
