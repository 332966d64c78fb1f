#include "frame/arguments.h"

namespace {

// An argument that holds an object of either kind.
HRESULT object_arg(const DISPPARAMS* params, UINT i, const VARIANT** argument) {
  *argument = disp_arg(params, i);
  if (!*argument) return DISP_E_BADPARAMCOUNT;
  if ((*argument)->vt != VT_DISPATCH && (*argument)->vt != VT_UNKNOWN) return DISP_E_TYPEMISMATCH;
  return (*argument)->punkVal ? S_OK : E_INVALIDARG;
}

}  // namespace

VARIANT* disp_arg(const DISPPARAMS* params, UINT i) {
  if (!params || i >= params->cArgs) return nullptr;
  VARIANT* argument = &params->rgvarg[params->cArgs - i - 1];
  if (argument->vt == (VT_BYREF | VT_VARIANT) && argument->pvarVal) return argument->pvarVal;
  return argument;
}

HRESULT coerce_arg(const DISPPARAMS* params, UINT i, VARTYPE vt, VARIANT* out) {
  const VARIANT* argument = disp_arg(params, i);
  if (!argument) return DISP_E_BADPARAMCOUNT;
  return FAILED(VariantChangeType(out, argument, 0, vt)) ? DISP_E_TYPEMISMATCH : S_OK;
}

HRESULT get_dispatch_arg(const DISPPARAMS* params, UINT i, CComPtr<IDispatch>* out) {
  out->reset();
  const VARIANT* argument = nullptr;
  RETURN_IF_FAILED(object_arg(params, i, &argument));
  if (argument->vt == VT_UNKNOWN) return argument->punkVal->QueryInterface(IID_IDispatch, out->put_void());
  *out = argument->pdispVal;
  return S_OK;
}

HRESULT get_unknown_arg(const DISPPARAMS* params, UINT i, CComPtr<IUnknown>* out) {
  out->reset();
  const VARIANT* argument = nullptr;
  RETURN_IF_FAILED(object_arg(params, i, &argument));
  *out = argument->vt == VT_DISPATCH ? static_cast<IUnknown*>(argument->pdispVal) : argument->punkVal;
  return S_OK;
}

void set_bstr_result(VARIANT* result, BSTR value) {
  if (!result) return SysFreeString(value);
  VariantInit(result);
  result->vt = VT_BSTR;
  result->bstrVal = value;
}

void set_bool_result(VARIANT* result, VARIANT_BOOL value) {
  if (!result) return;
  VariantInit(result);
  result->vt = VT_BOOL;
  result->boolVal = value;
}

void set_dispatch_result(VARIANT* result, IDispatch* value) {
  if (!result) {
    if (value) value->Release();
    return;
  }
  VariantInit(result);
  result->vt = VT_DISPATCH;
  result->pdispVal = value;
}

void set_unknown_result(VARIANT* result, IUnknown* value) {
  if (!result) {
    if (value) value->Release();
    return;
  }
  VariantInit(result);
  result->vt = VT_UNKNOWN;
  result->punkVal = value;
}

void set_array_result(VARIANT* result, SAFEARRAY* value) {
  if (!result) {
    SafeArrayDestroy(value);
    return;
  }
  VariantInit(result);
  if (!value) return;  // an array is never null: there is none
  result->vt = VT_ARRAY | VT_VARIANT;
  result->parray = value;
}

HRESULT set_variant_result(VARIANT* result, const VARIANT& value) {
  if (!result) return S_OK;
  VariantInit(result);
  return VariantCopy(result, &value);
}
