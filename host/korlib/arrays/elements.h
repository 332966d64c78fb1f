// The inside of safe arrays: how large an element of each type is, what owning one means, and how many there are.
#pragma once

#include <array>
#include <cstddef>

#include <korlib/variant.h>

namespace korlib::arrays {

struct ElementType {
  BYTE size = 0;     // in bytes; 0 for a type that no array can hold
  USHORT holds = 0;  // what an element owns (text, a reference, a value), as the bit of SAFEARRAY::fFeatures; or 0
};

inline constexpr auto kElementTypes = [] {
  std::array<ElementType, VT_UINT + 1> types{};
  types[VT_I1] = types[VT_UI1] = {1};
  types[VT_I2] = types[VT_UI2] = types[VT_BOOL] = {2};
  types[VT_I4] = types[VT_UI4] = types[VT_INT] = types[VT_UINT] = types[VT_R4] = types[VT_ERROR] = {4};
  types[VT_I8] = types[VT_UI8] = types[VT_R8] = types[VT_CY] = types[VT_DATE] = {8};
  types[VT_BSTR] = {sizeof(BSTR), 0x0100};
  types[VT_UNKNOWN] = {sizeof(void*), 0x0200};
  types[VT_DISPATCH] = {sizeof(void*), 0x0400};
  types[VT_VARIANT] = {sizeof(VARIANT), 0x0800};
  return types;
}();

constexpr ElementType element_type(VARTYPE vt) { return vt < kElementTypes.size() ? kElementTypes[vt] : ElementType{}; }
constexpr bool owns_contents(VARTYPE vt) { return element_type(vt).holds != 0; }

std::size_t element_count(const SAFEARRAY& array);

// A new string of the same bytes, null for null.
HRESULT copy_text(BSTR* target, BSTR source);

// Copies one element of a type that owns its contents, deeply, over bits that own nothing.
HRESULT copy_element(VARTYPE vt, void* target, const void* source);

// Copies elements deeply into memory that is zero. On failure what has been copied is cleared again.
HRESULT copy_elements(VARTYPE vt, void* target, const void* source, std::size_t count);

// Frees what `count` elements hold and leaves them zero. Asks about no locks: see can_clear().
void clear_elements(VARTYPE vt, void* elements, std::size_t count);

// Whether every VARIANT among the elements can be cleared: none holds a locked array.
bool can_clear(VARTYPE vt, const void* elements, std::size_t count);

// Frees an array and what it holds, locked or not; null is fine.
void free_array(SAFEARRAY* array);

}  // namespace korlib::arrays
