// Arguments and results of late-bound calls.
//
// Arguments are numbered from 0 in call order. Named arguments are not looked at. A missing argument is
// DISP_E_BADPARAMCOUNT, one of a type that does not convert DISP_E_TYPEMISMATCH.
#pragma once

#include <korlib/comvariant.h>
#include <korlib/dispatch.h>
#include <korlib/ptr.h>

// The argument, seen through a reference to a variant; null when there is none.
VARIANT* disp_arg(const DISPPARAMS* params, UINT i);
// A converted copy of it. `out` is VT_EMPTY or holds a value that goes; it is VT_EMPTY after a failure.
HRESULT coerce_arg(const DISPPARAMS* params, UINT i, VARTYPE vt, VARIANT* out);
// The object in it. A null object is E_INVALIDARG.
HRESULT get_dispatch_arg(const DISPPARAMS* params, UINT i, CComPtr<IDispatch>* out);
HRESULT get_unknown_arg(const DISPPARAMS* params, UINT i, CComPtr<IUnknown>* out);

// Store a member's value in the caller's result, whose old bits are not looked at. The value's ownership
// passes; when the caller wants no result it is freed.
void set_bstr_result(VARIANT* result, BSTR value);
void set_bool_result(VARIANT* result, VARIANT_BOOL value);
void set_dispatch_result(VARIANT* result, IDispatch* value);
void set_unknown_result(VARIANT* result, IUnknown* value);
void set_array_result(VARIANT* result, SAFEARRAY* value);  // elements are variants
// A copy; `value` stays the caller's.
HRESULT set_variant_result(VARIANT* result, const VARIANT& value);
