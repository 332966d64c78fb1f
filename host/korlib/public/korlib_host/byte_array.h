// Byte arrays of memory that is there already.
//
// Large bytes, such as the body of an upload, reach a component as a value of type VT_ARRAY | VT_UI1. An array made by
// SafeArrayCreate would need them copied into it; these bytes exist once:
//
//   SAFEARRAY* array = korlib_host::adopt_bytes(memory.get(), size);
//   if (!array) return E_OUTOFMEMORY;
//   memory.release();
//   data->vt = VT_ARRAY | VT_UI1;
//   data->parray = array;
#pragma once

#include <cstddef>

#include <korlib/safearray.h>

namespace korlib_host {

// A one-dimensional array of bytes, indexed from 0, that takes over `data`, which came from std::malloc and holds
// `size` bytes; `data` may be null for none. The caller owns the array, which frees the memory with std::free when it
// is destroyed.
//
// Null when there is no memory, or when `size` is above 2147483647, so that the highest index would not be a LONG:
// `data` is still the caller's then. Any thread may call it.
KORLIB_API SAFEARRAY* adopt_bytes(void* data, std::size_t size) noexcept;
// The same into such an array that is there already and has no elements: for bytes that must not be lost where there is
// no memory for one. Nothing can fail; `size` is not above 2147483647.
KORLIB_API void adopt_bytes(SAFEARRAY& empty, void* data, std::size_t size) noexcept;

}  // namespace korlib_host
