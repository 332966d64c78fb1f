// The functions that every script has.
#pragma once

#include <string_view>

#include "vbscript/tree.h"

namespace zelto::vbscript {

struct Function {
  std::wstring_view name;  // in small letters
  unsigned fewest;         // arguments
  unsigned most;
  Type type = Type::any;
};

// Null for any other name.
const Function* function_of(std::wstring_view folded_name);

}  // namespace zelto::vbscript
