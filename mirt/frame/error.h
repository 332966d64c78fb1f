// How a failure reaches the script: in words, or as a bare code.
#pragma once

#include <type_traits>
#include <utility>

#include <korlib/variant.h>

// Fills the calling thread's error object and answers `hr` unchanged, also when there is no memory for
// the error object, so that a member can end with `return RaiseError(E_FAIL, L"Mirt", text);`.
int RaiseError(int hr, const wchar_t* source, const wchar_t* description);

namespace mirt {

// Clears the thread's error object, for a caller that goes on after a failure. A later failure without a text
// would show the old one.
void forget_error() noexcept;

// SUCCEEDED, for a call after whose failure the caller goes on.
inline bool succeeded_or_forgotten(HRESULT hr) noexcept {
  if (FAILED(hr)) forget_error();
  return SUCCEEDED(hr);
}

// The code of the exception being handled; to be called in a catch block only. Members use guarded().
HRESULT hresult_from_exception() noexcept;

// Runs the body of an interface member. No exception may cross an interface: what the body throws becomes
// the code that is answered.
template <class Body>
HRESULT guarded(Body&& body) noexcept {
  static_assert(std::is_same_v<std::invoke_result_t<Body>, HRESULT>, "the body answers the member's code");
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    return hresult_from_exception();
  }
}

// The same for a member with a result: without a place for it E_POINTER. The result is cleared before the
// body runs, whatever bits it held, and the body fills it as its last step, so that it is empty after a
// failure, unless the member itself says otherwise.
template <class Out, class Body>
HRESULT guarded(Out* out, Body&& body) noexcept {
  if (!out) return E_POINTER;
  if constexpr (std::is_same_v<Out, VARIANT>) {
    VariantInit(out);
  } else {
    *out = Out{};
  }
  return guarded(std::forward<Body>(body));
}

}  // namespace mirt
