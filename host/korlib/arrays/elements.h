// The element types of safe arrays: how large one is, and what owning one means.
#pragma once

#include <cstddef>

#include <korlib/variant.h>

namespace korlib::arrays {

// Bytes of one element; 0 for a type that no array can hold.
ULONG element_size(VARTYPE vt);

// Whether an element of this type owns something (text, a reference, a value).
bool owns_contents(VARTYPE vt);

// Frees what `count` elements hold and leaves them zero. Asks about no locks: see can_clear().
void clear_elements(VARTYPE vt, void* elements, std::size_t count);

// Copies elements deeply into memory that is zero. On failure what has been copied is cleared again.
HRESULT copy_elements(VARTYPE vt, void* target, const void* source, std::size_t count);

// Frees an array and what it holds, locked or not; null is fine.
void free_array(SAFEARRAY* array);

// Whether every VARIANT among the elements can be cleared: none holds a locked array.
bool can_clear(VARTYPE vt, const void* elements, std::size_t count);

}  // namespace korlib::arrays
