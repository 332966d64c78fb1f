// A failure of activation, in words.
#pragma once

#include <string_view>

#include <korlib/hresult.h>

namespace korlib::activation {

// Leaves the description (UTF-8) as the thread's error information and returns `hr`.
HRESULT fail(HRESULT hr, std::string_view description);

}  // namespace korlib::activation
