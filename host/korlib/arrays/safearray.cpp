// Safe arrays as wholes: making, copying, resizing, locking and freeing them.
#include <korlib/safearray.h>
#include <korlib_host/byte_array.h>

#include <cstdlib>
#include <cstring>
#include <limits>

#include "arrays/bounds.h"
#include "arrays/elements.h"

namespace {

using korlib::arrays::element_count;
using korlib::arrays::element_size;

// What an array owns, in the bits that automation clients look at.
constexpr USHORT kHasVartype = 0x0080;
constexpr USHORT kHoldsText = 0x0100;
constexpr USHORT kHoldsUnknown = 0x0200;
constexpr USHORT kHoldsDispatch = 0x0400;
constexpr USHORT kHoldsVariants = 0x0800;

constexpr UINT kMaxDims = 60;
constexpr std::size_t kMaxBytes = std::numeric_limits<std::ptrdiff_t>::max();

USHORT features_of(VARTYPE vt) {
  switch (vt) {
    case VT_BSTR:
      return kHasVartype | kHoldsText;
    case VT_UNKNOWN:
      return kHasVartype | kHoldsUnknown;
    case VT_DISPATCH:
      return kHasVartype | kHoldsDispatch;
    case VT_VARIANT:
      return kHasVartype | kHoldsVariants;
    default:
      return kHasVartype;
  }
}

// The highest index must be a LONG; an empty dimension has none.
bool is_representable(const SAFEARRAYBOUND& bound) {
  const std::int64_t upper = std::int64_t{bound.lLbound} + bound.cElements - 1;
  return upper <= std::numeric_limits<LONG>::max();
}

bool total_bytes(ULONG size, UINT dims, const SAFEARRAYBOUND* bounds, std::size_t* bytes) {
  *bytes = size;
  for (UINT i = 0; i < dims; ++i) {
    if (!is_representable(bounds[i])) return false;
    if (__builtin_mul_overflow(*bytes, std::size_t{bounds[i].cElements}, bytes)) return false;
  }
  return *bytes <= kMaxBytes;
}

// An array without elements has an address as well, so that nobody mistakes it for a missing one.
void* allocate_data(std::size_t bytes) { return std::calloc(bytes ? bytes : 1, 1); }

}  // namespace

SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT dims, const SAFEARRAYBOUND* bounds) {
  const ULONG size = element_size(vt);
  std::size_t bytes = 0;
  if (!size || dims == 0 || dims > kMaxDims || !bounds || !total_bytes(size, dims, bounds, &bytes)) return nullptr;
  void* const block = std::calloc(1, sizeof(SAFEARRAY) + (dims - 1) * sizeof(SAFEARRAYBOUND));
  if (!block) return nullptr;
  auto* const array = static_cast<SAFEARRAY*>(block);
  array->pvData = allocate_data(bytes);
  if (!array->pvData) {
    std::free(array);
    return nullptr;
  }
  array->cDims = static_cast<USHORT>(dims);
  array->fFeatures = features_of(vt);
  array->cbElements = size;
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
  if (!array || !data) return array;
  std::free(array->pvData);
  array->pvData = data;
  array->rgsabound[0].cElements = static_cast<ULONG>(size);
  return array;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
  if (!array) return S_OK;
  const bool is_locked =
      array->cLocks || !korlib::arrays::can_clear(array->vtElement, array->pvData, element_count(*array));
  if (is_locked) return DISP_E_ARRAYISLOCKED;
  korlib::arrays::free_array(array);
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
  const HRESULT hr =
      korlib::arrays::copy_elements(array->vtElement, fresh->pvData, array->pvData, element_count(*array));
  if (FAILED(hr)) {
    korlib::arrays::free_array(fresh);
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
    if (!korlib::arrays::can_clear(array->vtElement, tail, tail_count)) {
      std::free(data);
      return DISP_E_ARRAYISLOCKED;
    }
    korlib::arrays::clear_elements(array->vtElement, tail, tail_count);
  }
  // Elements own what they hold by their bits alone, so moving the bits moves them.
  std::memcpy(data, array->pvData, old_bytes < new_bytes ? old_bytes : new_bytes);
  std::free(array->pvData);
  array->pvData = data;
  last = *last_bound;
  return S_OK;
}
