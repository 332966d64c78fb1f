// How a member fails: with a code, and with words in the calling thread's error object.
//
// A component's caller sees the code and reads the words with GetErrorInfo; a script sees both in what it catches.
// Exceptions end at the interface: no member lets one out.
#pragma once

#include <string_view>
#include <type_traits>

#include <korlib/errorinfo.h>
#include <korlib/variant.h>

namespace korlib {

// Makes `text` the description and `source` the source of the calling thread's error object, in place of what it had,
// and answers `hr` unchanged:
//   return raise(E_INVALIDARG, L"ADODB.Stream", L"Position: beyond the end");
// Without memory for the object the thread keeps the one it had.
KORLIB_API HRESULT raise(HRESULT hr, std::wstring_view source, std::wstring_view text);

// The code of the exception being handled. E_OUTOFMEMORY for std::bad_alloc and std::length_error; E_FAIL for any other
// std::exception, whose text becomes the description, with `source` as its source; E_UNEXPECTED for the rest. To be
// called while an exception is handled; most callers want guarded().
KORLIB_API HRESULT hresult_from_exception(std::wstring_view source);

// Runs the body of an interface member, which answers an HRESULT; what it throws becomes hresult_from_exception().
template <class Body>
HRESULT guarded(std::wstring_view source, Body body) noexcept {
  try {
    return body();
  } catch (...) {
    return hresult_from_exception(source);
  }
}

// The same for a member with an out-argument: E_POINTER where it is null, and *out is empty (VT_EMPTY, null, zero)
// before the body runs, so that a failure leaves it defined. What *out held is not released.
template <class Out, class Body>
HRESULT guarded(std::wstring_view source, Out* out, Body body) noexcept {
  if (!out) return E_POINTER;
  if constexpr (std::is_same_v<Out, VARIANT>) {
    VariantInit(out);
  } else {
    *out = Out{};
  }
  return guarded(source, body);
}

}  // namespace korlib
