// Values that outlive the page that stores them, and a program that has no memory left for more of them.
#pragma once

#include <string_view>

#include <korlib/variant.h>
#include <korlib_host/memory_limit.h>

namespace korlib_host {

// Whether the value takes more than its place.
inline bool owns_memory(const VARIANT& value) noexcept {
  return value.vt == VT_BSTR || value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN || value.vt >= VT_ARRAY;
}

// The failure when may_keep() says no.
KORLIB_API HRESULT raise_full(std::wstring_view source) noexcept;

}  // namespace korlib_host
