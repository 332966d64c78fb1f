// Functions that the engine calls. An exception of C++ that came to its frames would end the program, so each of them
// ends here, and goes on as one of the script.
//
//   definition.getProperty = callback<get_property>;
#pragma once

#include <type_traits>

#include "script/jsc.h"

namespace zelto::script {

// Makes the exception that is being handled one of the script.
void raise_caught(JSContextRef ctx, JSValueRef* exception) noexcept;

namespace detail {

// The last of a callback's arguments, where it takes an exception.
inline JSValueRef* exception_of(JSValueRef* last) { return last; }
template <class Last>
JSValueRef* exception_of(Last) {
  return nullptr;
}
template <class First, class Second, class... Rest>
JSValueRef* exception_of(First, Second second, Rest... rest) {
  return exception_of(second, rest...);
}

template <auto function>
struct Callback;

template <class Result, class... Argument, Result (*function)(JSContextRef, Argument...)>
struct Callback<function> {
  static Result call(JSContextRef ctx, Argument... arguments) noexcept {
    try {
      return function(ctx, arguments...);
    } catch (...) {
      raise_caught(ctx, exception_of(arguments...));
    }
    if constexpr (std::is_same_v<Result, JSValueRef>) {
      return JSValueMakeUndefined(ctx);
    } else {
      return Result();
    }
  }
};

}  // namespace detail

template <auto function>
inline constexpr auto callback = &detail::Callback<function>::call;

}  // namespace zelto::script
