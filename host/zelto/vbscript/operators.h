// What is done to numbers, texts and elements so often that each script has a function of its own for it.
#pragma once

#include <string>
#include <string_view>

namespace zelto::vbscript {

// For plain values; all others are handed to the library. The engine compiles a function by the kinds of values that it
// has seen: one of the library has seen those of all pages, this one only those of its own.
struct Operation {
  std::wstring text;             // a function
  std::wstring_view needs = {};  // of these, or of the library
};

// Null for any other name.
const Operation* operation_of(std::wstring_view name);

}  // namespace zelto::vbscript
