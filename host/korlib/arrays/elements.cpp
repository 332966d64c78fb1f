#include "arrays/elements.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include <korlib/unknown.h>
#include <korlib_host/own_strings.h>

namespace korlib::arrays {

namespace {

// An array inside is freed without a second look for locks: looking once at every level would make deep
// nesting slow.
void clear_variant(VARIANT* value) {
  const bool owns_array = (value->vt & VT_ARRAY) && !(value->vt & VT_BYREF);
  if (!owns_array) {
    VariantClear(value);
    return;
  }
  value->vt = VT_EMPTY;
  free_array(std::exchange(value->parray, nullptr));
}

void clear_one(VARTYPE vt, void* element) {
  switch (vt) {
    case VT_BSTR:
      SysFreeString(std::exchange(*static_cast<BSTR*>(element), nullptr));
      break;
    case VT_VARIANT:
      clear_variant(static_cast<VARIANT*>(element));
      break;
    default:
      if (IUnknown* object = std::exchange(*static_cast<IUnknown**>(element), nullptr)) object->Release();
  }
}

}  // namespace

HRESULT copy_text(BSTR* target, BSTR source) {
  *target = nullptr;
  if (!source) return S_OK;
  *target = SysAllocStringByteLen(reinterpret_cast<const char*>(source), korlib_host::byte_length_of(source));
  return *target ? S_OK : E_OUTOFMEMORY;
}

std::size_t element_count(const SAFEARRAY& array) {
  std::size_t count = 1;
  for (USHORT d = 0; d < array.cDims; ++d) count *= array.rgsabound[d].cElements;
  return count;
}

HRESULT copy_element(VARTYPE vt, void* target, const void* source) {
  switch (vt) {
    case VT_BSTR:
      return copy_text(static_cast<BSTR*>(target), *static_cast<const BSTR*>(source));
    case VT_VARIANT:
      return VariantCopy(static_cast<VARIANT*>(target), static_cast<const VARIANT*>(source));
    default: {
      // Every interface begins as IUnknown does.
      auto* const object = *static_cast<IUnknown* const*>(source);
      if (object) object->AddRef();
      *static_cast<IUnknown**>(target) = object;
      return S_OK;
    }
  }
}

void clear_elements(VARTYPE vt, void* elements, std::size_t count) {
  const std::size_t size = element_type(vt).size;
  auto* const first = static_cast<char*>(elements);
  if (owns_contents(vt)) {
    for (std::size_t i = 0; i < count; ++i) clear_one(vt, first + i * size);
  }
  std::memset(first, 0, count * size);
}

HRESULT copy_elements(VARTYPE vt, void* target, const void* source, std::size_t count) {
  const std::size_t size = element_type(vt).size;
  auto* const to = static_cast<char*>(target);
  const auto* const from = static_cast<const char*>(source);
  if (!owns_contents(vt)) {
    std::memcpy(to, from, count * size);
    return S_OK;
  }
  for (std::size_t i = 0; i < count; ++i) {
    const HRESULT hr = copy_element(vt, to + i * size, from + i * size);
    if (FAILED(hr)) {
      clear_elements(vt, target, i);
      return hr;
    }
  }
  return S_OK;
}

void free_array(SAFEARRAY* array) {
  if (!array) return;
  if (owns_contents(array->vtElement)) clear_elements(array->vtElement, array->pvData, element_count(*array));
  std::free(array->pvData);
  std::free(array);
}

bool can_clear(VARTYPE vt, const void* elements, std::size_t count) {
  if (vt != VT_VARIANT) return true;
  const auto* const values = static_cast<const VARIANT*>(elements);
  for (std::size_t i = 0; i < count; ++i) {
    const VARIANT& value = values[i];
    const bool owns_array = (value.vt & VT_ARRAY) && !(value.vt & VT_BYREF) && value.parray;
    if (!owns_array) continue;
    const SAFEARRAY& inner = *value.parray;
    if (inner.cLocks || !can_clear(inner.vtElement, inner.pvData, element_count(inner))) return false;
  }
  return true;
}

}  // namespace korlib::arrays
