// Safe arrays from inside: bounds and single elements.
#include <cstring>

#include <korlib/unknown.h>

#include "arrays/bounds.h"
#include "arrays/elements.h"

namespace {

using korlib::arrays::bound_of;

bool holds_pointers(VARTYPE vt) { return vt == VT_BSTR || vt == VT_DISPATCH || vt == VT_UNKNOWN; }

}  // namespace

UINT SafeArrayGetDim(SAFEARRAY* array) { return array ? array->cDims : 0; }

UINT SafeArrayGetElemsize(SAFEARRAY* array) { return array ? array->cbElements : 0; }

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dim, LONG* lower) {
  if (!lower) return E_POINTER;
  *lower = 0;
  if (!array) return E_INVALIDARG;
  const SAFEARRAYBOUND* const bound = bound_of(array, dim);
  if (!bound) return DISP_E_BADINDEX;
  *lower = bound->lLbound;
  return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dim, LONG* upper) {
  if (!upper) return E_POINTER;
  *upper = 0;
  if (!array) return E_INVALIDARG;
  const SAFEARRAYBOUND* const bound = bound_of(array, dim);
  if (!bound) return DISP_E_BADINDEX;
  *upper = static_cast<LONG>(std::int64_t{bound->lLbound} + bound->cElements - 1);
  return S_OK;
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
    const SAFEARRAYBOUND* const bound = bound_of(array, dim);
    const std::int64_t from_lower = std::int64_t{indices[dim - 1]} - bound->lLbound;
    if (from_lower < 0 || from_lower >= bound->cElements) return DISP_E_BADINDEX;
    offset += static_cast<std::size_t>(from_lower) * stride;
    stride *= bound->cElements;
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
  if (holds_pointers(vt)) {
    // The new one is counted before the old one goes: both may be the same.
    void* fresh = nullptr;
    RETURN_IF_FAILED(korlib::arrays::copy_elements(vt, &fresh, &value, 1));
    korlib::arrays::clear_elements(vt, element, 1);
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
  if (array->vtElement == VT_VARIANT) VariantInit(static_cast<VARIANT*>(value));
  if (holds_pointers(array->vtElement)) std::memset(value, 0, sizeof(void*));
  return korlib::arrays::copy_elements(array->vtElement, value, element, 1);
}
