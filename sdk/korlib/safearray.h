// Safe arrays: typed, bounded, multi-dimensional arrays owned by one holder. The host supplies the
// functions.
//
// Elements lie with the first dimension varying fastest. rgsabound holds the bounds with the LAST
// dimension first, as automation clients expect; the functions take dimensions numbered from 1 in
// declaration order. Element types whose contents are owned (BSTR, interfaces, VARIANT) are copied on
// SafeArrayPutElement and SafeArrayGetElement, and freed with the array.
//
// An array that is locked (SafeArrayLock, SafeArrayAccessData) can be neither destroyed nor resized:
// DISP_E_ARRAYISLOCKED. An index outside the bounds is DISP_E_BADINDEX.
#pragma once

#include <korlib/types.h>

struct SAFEARRAYBOUND {
  ULONG cElements;
  LONG lLbound;
};

struct SAFEARRAY {
  USHORT cDims;
  USHORT fFeatures;
  ULONG cbElements;
  ULONG cLocks;
  VARTYPE vtElement;  // the element type, as SafeArrayGetVartype answers it
  void* pvData;
  SAFEARRAYBOUND rgsabound[1];  // cDims of them
};

extern "C" {
// Null for an unknown element type, zero dimensions, or a size that cannot be represented.
KORLIB_API SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT dims, const SAFEARRAYBOUND* bounds);
KORLIB_API SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lower, ULONG elements);
KORLIB_API HRESULT SafeArrayDestroy(SAFEARRAY* array);  // null is fine
KORLIB_API HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy);
KORLIB_API HRESULT SafeArrayLock(SAFEARRAY* array);
KORLIB_API HRESULT SafeArrayUnlock(SAFEARRAY* array);
KORLIB_API HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
KORLIB_API HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
// `indices` has one entry a dimension, the first dimension first. For BSTR and interface elements
// `value` is the pointer itself in Put, and the address that receives it in Get.
KORLIB_API HRESULT SafeArrayPutElement(SAFEARRAY* array, const LONG* indices, void* value);
KORLIB_API HRESULT SafeArrayGetElement(SAFEARRAY* array, const LONG* indices, void* value);
KORLIB_API HRESULT SafeArrayPtrOfIndex(SAFEARRAY* array, const LONG* indices, void** element);
KORLIB_API UINT SafeArrayGetDim(SAFEARRAY* array);  // 0 for null
KORLIB_API UINT SafeArrayGetElemsize(SAFEARRAY* array);
KORLIB_API HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dim, LONG* lower);
KORLIB_API HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dim, LONG* upper);
KORLIB_API HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* vt);
// Resizes the last dimension; elements that go are freed, new ones are zero.
KORLIB_API HRESULT SafeArrayRedim(SAFEARRAY* array, const SAFEARRAYBOUND* last_bound);
}
