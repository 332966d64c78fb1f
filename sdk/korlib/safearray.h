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

// One dimension: how many indices it has, and the lowest of them. The highest index must be a LONG.
struct SAFEARRAYBOUND {
  ULONG cElements;
  LONG lLbound;
};

// An array, as it lies in memory. Callers read it and use the functions to change it; only cLocks may be
// counted up and down directly, which is what SafeArrayLock does.
struct SAFEARRAY {
  // How many dimensions; rgsabound has as many entries.
  USHORT cDims;
  // What the elements own, in the bits of automation: 0x0080 the type is known, 0x0100 BSTR, 0x0200 IUnknown,
  // 0x0400 IDispatch, 0x0800 VARIANT.
  USHORT fFeatures;
  // The size of an element in bytes.
  ULONG cbElements;
  // How often it is locked. One that is locked keeps its size and place.
  ULONG cLocks;
  // The element type, as SafeArrayGetVartype answers it: a plain type, VT_BSTR, VT_DISPATCH, VT_UNKNOWN or
  // VT_VARIANT.
  VARTYPE vtElement;
  // The elements, one after the other; never null, also when there are none.
  void* pvData;
  // The bounds, cDims of them, the LAST dimension first.
  SAFEARRAYBOUND rgsabound[1];
};

extern "C" {
// A new array whose elements are zero: numbers 0, strings and objects null, variants VT_EMPTY. `bounds` has an
// entry a dimension, the first dimension first. The caller owns it, until it becomes the value of a VARIANT or
// is handed over as a result.
//
// Null for an unknown element type, zero dimensions or more than 60, or a size that cannot be represented or
// allocated.
KORLIB_API SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT dims, const SAFEARRAYBOUND* bounds);
// The same with one dimension, whose indices begin at `lower`.
KORLIB_API SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lower, ULONG elements);
// Frees the array and all that its elements own; null is fine. DISP_E_ARRAYISLOCKED, and nothing is freed,
// while it or an array inside it is locked.
KORLIB_API HRESULT SafeArrayDestroy(SAFEARRAY* array);
// A new array with deep copies of the elements, which the caller owns. On failure *copy is null.
KORLIB_API HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy);
// Counts a use of the elements, which ends with one SafeArrayUnlock. The second without the first is
// E_UNEXPECTED. Locks do not keep other threads out.
KORLIB_API HRESULT SafeArrayLock(SAFEARRAY* array);
KORLIB_API HRESULT SafeArrayUnlock(SAFEARRAY* array);
// The same, and the elements' address, good until the use ends.
KORLIB_API HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
KORLIB_API HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
// Copies a value into an element, or an element out; what the element held is freed, what is taken out is the
// caller's. `indices` has one entry a dimension, the first dimension first; DISP_E_BADINDEX when one is
// outside.
//
// For BSTR and interface elements `value` is the pointer itself in Put, and the address that receives it in
// Get. For the other types it is the address of the value in both.
KORLIB_API HRESULT SafeArrayPutElement(SAFEARRAY* array, const LONG* indices, void* value);
KORLIB_API HRESULT SafeArrayGetElement(SAFEARRAY* array, const LONG* indices, void* value);
// The address of an element, which stays the array's; good while the array keeps its size. Nothing is locked.
KORLIB_API HRESULT SafeArrayPtrOfIndex(SAFEARRAY* array, const LONG* indices, void** element);
// How many dimensions, and bytes an element; 0 for null.
KORLIB_API UINT SafeArrayGetDim(SAFEARRAY* array);
KORLIB_API UINT SafeArrayGetElemsize(SAFEARRAY* array);
// The lowest and the highest index of a dimension, numbered from 1; DISP_E_BADINDEX when there is none of that
// number. An empty dimension has a highest index below its lowest.
KORLIB_API HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dim, LONG* lower);
KORLIB_API HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dim, LONG* upper);
// The element type.
KORLIB_API HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* vt);
// Resizes the last dimension and gives it a new lowest index; elements that go are freed, new ones are zero,
// the others stay, perhaps at another address. DISP_E_ARRAYISLOCKED when the array is in use. After a failure
// the array is as it was.
KORLIB_API HRESULT SafeArrayRedim(SAFEARRAY* array, const SAFEARRAYBOUND* last_bound);
}
