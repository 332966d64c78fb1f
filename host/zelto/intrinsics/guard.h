// The guard of interface members, and the out-parameter of a member that hands out text.
#pragma once

#include <korlib_host/errors.h>

#include <string_view>

namespace zelto {

using korlib::guarded;

}  // namespace zelto
