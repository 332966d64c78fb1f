// How a member hands out its result: a number, a boolean or a text into the out-argument.
#pragma once

#include <string_view>
#include <type_traits>

#include <korlib/combstr.h>
#include <korlib/hresult.h>

namespace korlib {

// S_OK, or E_POINTER where there is no room for a result. What *out held is not released.
template <class Number>
requires std::is_arithmetic_v<Number> HRESULT give(std::type_identity_t<Number> number, Number* out) {
  if (!out) return E_POINTER;
  *out = number;
  return S_OK;
}
inline HRESULT give(bool is_so, VARIANT_BOOL* out) { return give(is_so ? VARIANT_TRUE : VARIANT_FALSE, out); }
// A copy of the text; E_OUTOFMEMORY where there is no memory for one.
inline HRESULT give(std::wstring_view text, BSTR* out) {
  if (!out) return E_POINTER;
  *out = new_bstr(text);
  return *out ? S_OK : E_OUTOFMEMORY;
}

}  // namespace korlib
