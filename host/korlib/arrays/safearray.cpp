#include <korlib/safearray.h>
#include <korlib_host/byte_array.h>
#include <korlib_host/memory_limit.h>

#include <cstdlib>
#include <cstring>
#include <limits>

#include "arrays/elements.h"

namespace {

using namespace korlib::arrays;

constexpr USHORT kHasVartype = 0x0080;  // in fFeatures, beside what the elements hold
constexpr UINT kMaxDims = 60;
constexpr std::size_t kMaxBytes = std::numeric_limits<std::ptrdiff_t>::max();

// Of an empty dimension, one below the lowest.
std::int64_t highest_index(const SAFEARRAYBOUND& bound) { return std::int64_t{bound.lLbound} + bound.cElements - 1; }

bool is_representable(const SAFEARRAYBOUND& bound) { return highest_index(bound) <= std::numeric_limits<LONG>::max(); }

bool total_bytes(ULONG size, UINT dims, const SAFEARRAYBOUND* bounds, std::size_t* bytes) {
  *bytes = size;
  for (UINT i = 0; i < dims; ++i) {
    if (!is_representable(bounds[i])) return false;
    if (__builtin_mul_overflow(*bytes, std::size_t{bounds[i].cElements}, bytes)) return false;
  }
  return *bytes <= kMaxBytes;
}

// A dimension by its number, from 1 in declaration order; they are stored last first.
const SAFEARRAYBOUND& bound_of(const SAFEARRAY& array, UINT dim) { return array.rgsabound[array.cDims - dim]; }

// One end of a dimension, which `end` takes from its bound.
template <class End>
HRESULT read_bound(const SAFEARRAY* array, UINT dim, LONG* index, End end) {
  if (!index) return E_POINTER;
  *index = 0;
  if (!array) return E_INVALIDARG;
  if (dim < 1 || dim > array->cDims) return DISP_E_BADINDEX;
  *index = static_cast<LONG>(end(bound_of(*array, dim)));
  return S_OK;
}

// An array without elements has an address as well, so that nobody mistakes it for a missing one.
void* allocate_data(std::size_t bytes) {
  return korlib_host::may_take(bytes) ? std::calloc(bytes ? bytes : 1, 1) : nullptr;
}

}  // namespace

SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT dims, const SAFEARRAYBOUND* bounds) {
  const ElementType type = element_type(vt);
  std::size_t bytes = 0;
  if (!type.size || dims == 0 || dims > kMaxDims || !bounds) return nullptr;
  if (!total_bytes(type.size, dims, bounds, &bytes)) return nullptr;
  void* const block = std::calloc(1, sizeof(SAFEARRAY) + (dims - 1) * sizeof(SAFEARRAYBOUND));
  if (!block) return nullptr;
  auto* const array = static_cast<SAFEARRAY*>(block);
  array->pvData = allocate_data(bytes);
  if (!array->pvData) {
    std::free(array);
    return nullptr;
  }
  array->cDims = static_cast<USHORT>(dims);
  array->fFeatures = kHasVartype | type.holds;
  array->cbElements = type.size;
  array->vtElement = vt;
  for (UINT i = 0; i < dims; ++i) array->rgsabound[dims - 1 - i] = bounds[i];
  return array;
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lower, ULONG elements) {
  const SAFEARRAYBOUND bound{elements, lower};
  return SafeArrayCreate(vt, 1, &bound);
}

SAFEARRAY* korlib_host::adopt_bytes(void* data, std::size_t size) noexcept {
  if (size > static_cast<std::size_t>(std::numeric_limits<LONG>::max())) return nullptr;
  SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, 0);
  if (array) adopt_bytes(*array, data, size);
  return array;
}

void korlib_host::adopt_bytes(SAFEARRAY& empty, void* data, std::size_t size) noexcept {
  if (!data) return;
  std::free(empty.pvData);
  empty.pvData = data;
  empty.rgsabound[0].cElements = static_cast<ULONG>(size);
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
  if (!array) return S_OK;
  const bool is_locked = array->cLocks || !can_clear(array->vtElement, array->pvData, element_count(*array));
  if (is_locked) return DISP_E_ARRAYISLOCKED;
  free_array(array);
  return S_OK;
}

HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy) {
  if (!copy) return E_POINTER;
  *copy = nullptr;
  if (!array) return E_INVALIDARG;
  SAFEARRAYBOUND bounds[kMaxDims];
  for (UINT i = 0; i < array->cDims; ++i) bounds[i] = array->rgsabound[array->cDims - 1 - i];
  SAFEARRAY* const fresh = SafeArrayCreate(array->vtElement, array->cDims, bounds);
  if (!fresh) return E_OUTOFMEMORY;
  const HRESULT hr = copy_elements(array->vtElement, fresh->pvData, array->pvData, element_count(*array));
  if (FAILED(hr)) {
    free_array(fresh);
    return hr;
  }
  *copy = fresh;
  return S_OK;
}

HRESULT SafeArrayLock(SAFEARRAY* array) {
  if (!array) return E_INVALIDARG;
  if (array->cLocks == std::numeric_limits<ULONG>::max()) return E_UNEXPECTED;
  ++array->cLocks;
  return S_OK;
}

HRESULT SafeArrayUnlock(SAFEARRAY* array) {
  if (!array) return E_INVALIDARG;
  if (array->cLocks == 0) return E_UNEXPECTED;
  --array->cLocks;
  return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
  if (!data) return E_POINTER;
  *data = nullptr;
  RETURN_IF_FAILED(SafeArrayLock(array));
  *data = array->pvData;
  return S_OK;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) { return SafeArrayUnlock(array); }

HRESULT SafeArrayRedim(SAFEARRAY* array, const SAFEARRAYBOUND* last_bound) {
  if (!array || !last_bound || !is_representable(*last_bound)) return E_INVALIDARG;
  if (array->cLocks) return DISP_E_ARRAYISLOCKED;

  SAFEARRAYBOUND& last = array->rgsabound[0];
  std::size_t slice = array->cbElements;  // bytes of one index of the last dimension
  for (USHORT d = 1; d < array->cDims; ++d) slice *= array->rgsabound[d].cElements;
  const std::size_t old_bytes = slice * last.cElements;
  std::size_t new_bytes = 0;
  if (__builtin_mul_overflow(slice, std::size_t{last_bound->cElements}, &new_bytes) || new_bytes > kMaxBytes) {
    return E_OUTOFMEMORY;
  }

  void* const data = allocate_data(new_bytes);
  if (!data) return E_OUTOFMEMORY;
  if (new_bytes < old_bytes) {
    void* const tail = static_cast<char*>(array->pvData) + new_bytes;
    const std::size_t tail_count = (old_bytes - new_bytes) / array->cbElements;
    if (!can_clear(array->vtElement, tail, tail_count)) {
      std::free(data);
      return DISP_E_ARRAYISLOCKED;
    }
    clear_elements(array->vtElement, tail, tail_count);
  }
  // Elements own what they hold by their bits alone, so moving the bits moves them.
  std::memcpy(data, array->pvData, old_bytes < new_bytes ? old_bytes : new_bytes);
  std::free(array->pvData);
  array->pvData = data;
  last = *last_bound;
  return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* array) { return array ? array->cDims : 0; }

UINT SafeArrayGetElemsize(SAFEARRAY* array) { return array ? array->cbElements : 0; }

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dim, LONG* lower) {
  return read_bound(array, dim, lower, [](const SAFEARRAYBOUND& bound) { return bound.lLbound; });
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dim, LONG* upper) {
  return read_bound(array, dim, upper, highest_index);
}

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* vt) {
  if (!vt) return E_POINTER;
  *vt = VT_EMPTY;
  if (!array) return E_INVALIDARG;
  *vt = array->vtElement;
  return S_OK;
}

HRESULT SafeArrayPtrOfIndex(SAFEARRAY* array, const LONG* indices, void** element) {
  if (!element) return E_POINTER;
  *element = nullptr;
  if (!array || !indices) return E_INVALIDARG;
  std::size_t offset = 0;
  std::size_t stride = 1;
  for (UINT dim = 1; dim <= array->cDims; ++dim) {
    const SAFEARRAYBOUND& bound = bound_of(*array, dim);
    const std::int64_t from_lower = std::int64_t{indices[dim - 1]} - bound.lLbound;
    if (from_lower < 0 || from_lower >= bound.cElements) return DISP_E_BADINDEX;
    offset += static_cast<std::size_t>(from_lower) * stride;
    stride *= bound.cElements;
  }
  *element = static_cast<char*>(array->pvData) + offset * array->cbElements;
  return S_OK;
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, const LONG* indices, void* value) {
  void* element = nullptr;
  RETURN_IF_FAILED(SafeArrayPtrOfIndex(array, indices, &element));
  const VARTYPE vt = array->vtElement;
  if (vt == VT_VARIANT) {
    return value ? VariantCopy(static_cast<VARIANT*>(element), static_cast<const VARIANT*>(value)) : E_INVALIDARG;
  }
  if (owns_contents(vt)) {
    // The new one is counted before the old one goes: both may be the same.
    void* fresh = nullptr;
    RETURN_IF_FAILED(copy_element(vt, &fresh, &value));
    clear_elements(vt, element, 1);
    std::memcpy(element, &fresh, sizeof fresh);
    return S_OK;
  }
  if (!value) return E_INVALIDARG;
  std::memcpy(element, value, array->cbElements);
  return S_OK;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, const LONG* indices, void* value) {
  if (!value) return E_POINTER;
  void* element = nullptr;
  RETURN_IF_FAILED(SafeArrayPtrOfIndex(array, indices, &element));
  if (owns_contents(array->vtElement)) std::memset(value, 0, array->cbElements);
  return copy_elements(array->vtElement, value, element, 1);
}
