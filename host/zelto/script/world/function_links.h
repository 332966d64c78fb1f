// What a function leads to in a world whose pages run as functions: who called it, and what makes others like it.
#pragma once

#include <string_view>

#include "script/jsc.h"

namespace zelto::script {

// A page that is a script has no function around it that could be a caller, and code that it makes of text sees all of
// its names. So the engine's `caller` answers null for the function that the page has become, and the constructors of
// functions show the page's names before they make one.
struct FunctionLinks {
  // In a world that no page has run in. Throws std::bad_alloc.
  static void replace(JSContextRef context);
  // A script of that, with the functions that take the engine's place.
  static std::u16string_view source();
};

}  // namespace zelto::script
